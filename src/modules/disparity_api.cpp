#include <algorithm>
#include <iterator>
#include <span>
#include <tuple>

#include "modules/disparity.h"
#include "modules/fixed_point_api.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

namespace {

using Params = DeDispCalcParams_S;

// Which members of the record make up a group: pairs of group member and record member, used by setter and getter.
template <typename Group, typename... Members>
struct GroupOf {
  std::tuple<std::pair<Members Group::*, Members Params::*>...> members;

  constexpr explicit GroupOf(std::pair<Members Group::*, Members Params::*>... pairs) : members(pairs...) {}

  int32_t set(const Group* group) const {
    if (group == nullptr) return VQ3900_ERROR_ARGUMENT;
    Params& params = engine().disparity;
    std::apply([&](const auto&... pair) { ((params.*pair.second = group->*pair.first), ...); }, members);
    return VQ3900_OK;
  }

  int32_t get(Group* group) const {
    if (group == nullptr) return VQ3900_ERROR_ARGUMENT;
    const Params& params = engine().disparity;
    std::apply([&](const auto&... pair) { ((group->*pair.first = params.*pair.second), ...); }, members);
    return VQ3900_OK;
  }
};

constexpr GroupOf kGrowMatch{
    std::pair{&DeGrowMatchParams_S::cost_strong_t, &Params::cost_strong_t},
    std::pair{&DeGrowMatchParams_S::cost_weak_t, &Params::cost_weak_t},
    std::pair{&DeGrowMatchParams_S::conf_region_t, &Params::conf_region_t},
    std::pair{&DeGrowMatchParams_S::conf_strong_t, &Params::conf_strong_t},
    std::pair{&DeGrowMatchParams_S::conf_grow_t, &Params::conf_grow_t},
    std::pair{&DeGrowMatchParams_S::grow_disp_diff_thr, &Params::grow_disp_diff_thr},
};

constexpr GroupOf kShadowCheck{
    std::pair{&DeShadowCheckParams_S::shadow_en, &Params::shadow_en},
    std::pair{&DeShadowCheckParams_S::shadow_ring_base, &Params::shadow_ring_base},
    std::pair{&DeShadowCheckParams_S::shadow_win_size, &Params::shadow_win_size},
    std::pair{&DeShadowCheckParams_S::shadow_smooth_size, &Params::shadow_smooth_size},
    std::pair{&DeShadowCheckParams_S::shadow_tex_thresh, &Params::shadow_tex_thresh},
    std::pair{&DeShadowCheckParams_S::shadow_diff_per, &Params::shadow_diff_per},
    std::pair{&DeShadowCheckParams_S::shadow_edge_preserving, &Params::shadow_edge_preserving},
    std::pair{&DeShadowCheckParams_S::cost_shadow1_t, &Params::cost_shadow1_t},
    std::pair{&DeShadowCheckParams_S::cost_shadow2_t, &Params::cost_shadow2_t},
};

constexpr GroupOf kArmShort{
    std::pair{&DeArmShortParams_S::arm_len, &Params::arm_len},
    std::pair{&DeArmShortParams_S::arm_short_en, &Params::arm_short_en},
    std::pair{&DeArmShortParams_S::arm_short_mask, &Params::arm_short_mask},
};

constexpr GroupOf kTile{
    std::pair{&DeTileParams_S::tile_width, &Params::tile_width},
    std::pair{&DeTileParams_S::tile_overlap_x, &Params::tile_overlap_x},
    std::pair{&DeTileParams_S::tile_overlap_x_fast, &Params::tile_overlap_x_fast},
    std::pair{&DeTileParams_S::tile_overlap_y_traverse, &Params::tile_overlap_y_traverse},
};

constexpr GroupOf kSeed{
    std::pair{&DeSeedParams_S::max_see_num, &Params::max_see_num},
    std::pair{&DeSeedParams_S::max_seed_try_num, &Params::max_seed_try_num},
    std::pair{&DeSeedParams_S::max_seed_valid_try_num, &Params::max_seed_valid_try_num},
};

constexpr GroupOf kLrc{
    std::pair{&DeLrcParams_S::lrc_en, &Params::lrc_en},
    std::pair{&DeLrcParams_S::lrc_thresh, &Params::lrc_thresh},
};

constexpr GroupOf kSmoothFilter{
    std::pair{&DeSmoothFilterParams_S::smooth_enable, &Params::smooth_enable},
    std::pair{&DeSmoothFilterParams_S::smooth_win_size, &Params::smooth_win_size},
    std::pair{&DeSmoothFilterParams_S::smooth_enable_flag, &Params::smooth_enable_flag},
};

}  // namespace

int32_t set_depth_engine_win_size(uint32_t win_size) {
  engine().disparity.win_size = win_size;
  return VQ3900_OK;
}

int32_t get_depth_engine_win_size(uint32_t* out) {
  return vq3900::copy_out(engine().disparity.win_size, out);
}

int32_t set_min_disp(int8_t min_disparity) {
  engine().disparity.min_disparity = min_disparity;
  return VQ3900_OK;
}

int32_t get_min_disp(uint8_t* out) {
  return vq3900::copy_out(static_cast<uint8_t>(engine().disparity.min_disparity & 0xFF), out);
}

int32_t set_grow_match_params(const DeGrowMatchParams_S* params) {
  return kGrowMatch.set(params);
}

int32_t get_grow_match_params(DeGrowMatchParams_S* params) {
  return kGrowMatch.get(params);
}

int32_t set_shadow_check_params(const DeShadowCheckParams_S* params) {
  return kShadowCheck.set(params);
}

int32_t get_shadow_check_params(DeShadowCheckParams_S* params) {
  return kShadowCheck.get(params);
}

int32_t set_arm_short_params(const DeArmShortParams_S* params) {
  return kArmShort.set(params);
}

int32_t get_arm_short_params(DeArmShortParams_S* params) {
  return kArmShort.get(params);
}

int32_t set_tile_width_overlap(const DeTileParams_S* params) {
  return kTile.set(params);
}

int32_t get_tile_width_overlap(DeTileParams_S* params) {
  return kTile.get(params);
}

int32_t set_seed_params(const DeSeedParams_S* params) {
  return kSeed.set(params);
}

int32_t get_seed_params(DeSeedParams_S* params) {
  return kSeed.get(params);
}

int32_t set_lrc_params(DeLrcParams_S params) {
  return kLrc.set(&params);
}

int32_t get_lrc_params(DeLrcParams_S* params) {
  return kLrc.get(params);
}

int32_t set_smoothfilter_params(const DeSmoothFilterParams_S* params) {
  if (const int32_t code = kSmoothFilter.set(params); code != VQ3900_OK) return code;
  engine().disparity.smooth_enable_flag = params->smooth_enable != 0 ? 1 : 0;  // whatever the caller put there
  return VQ3900_OK;
}

int32_t get_smoothfilter_params(DeSmoothFilterParams_S* params) {
  return kSmoothFilter.get(params);
}

int32_t set_subpixel_coef(const double* coefficients) {
  if (coefficients == nullptr) return VQ3900_ERROR_ARGUMENT;
  std::ranges::copy(std::span<const double, 4>{coefficients, 4}, engine().disparity.sp_coef);
  return VQ3900_OK;
}

int32_t get_subpixel_coef(double** coefficients) {
  if (coefficients == nullptr || *coefficients == nullptr) return VQ3900_ERROR_ARGUMENT;
  std::ranges::copy(engine().disparity.sp_coef, *coefficients);
  return VQ3900_OK;
}

int32_t de_update_disp_calc_params(const DeDispCalcParams_S* params) {
  return vq3900::copy_in(params, engine().disparity);
}

int32_t de_copy_disp_calc_params(DeDispCalcParams_S* params) {
  return vq3900::copy_out(engine().disparity, params);
}

int32_t convert_calc_disp_float_to_registers(void) {
  vq3900::encode_disparity(engine().disparity, engine().registers, vq3900::print_overflow);
  return VQ3900_OK;
}

int32_t convert_calc_disp_registers_to_float(void) {
  vq3900::decode_disparity(engine().registers, engine().disparity);
  return VQ3900_OK;
}
