// No setter, getter, converter, table function or entry point allocates, whether it succeeds or fails.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <span>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/get_entries.h"
#include "support/set_entries.h"

namespace {

bool counting = false;
std::size_t allocations = 0;

void note_allocation() {
  if (counting) ++allocations;
}

void* allocate(std::size_t size) {
  note_allocation();
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t size) {
  return allocate(size);
}

void* operator new[](std::size_t size) {
  return allocate(size);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

// The C functions are counted where they can be replaced: the sanitizers have replaced them already.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VQ3900_TEST_ADDRESS_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define VQ3900_TEST_ADDRESS_SANITIZER
#endif
#if defined(__GLIBC__) && !defined(VQ3900_TEST_ADDRESS_SANITIZER)
#define VQ3900_TEST_COUNTS_MALLOC
extern "C" {
void* __libc_malloc(std::size_t size) noexcept;
void* __libc_calloc(std::size_t count, std::size_t size) noexcept;
void* __libc_realloc(void* memory, std::size_t size) noexcept;

void* malloc(std::size_t size) noexcept {
  note_allocation();
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  note_allocation();
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) noexcept {
  note_allocation();
  return __libc_realloc(memory, size);
}
}
#endif

namespace vq3900::test {
namespace {

// Memory that calls read and write: large enough for every record and table, and no local, so that nothing is optimised
// away.
alignas(8) unsigned char memory[4096];
alignas(8) unsigned char second_memory[4096];
DeRegElement_S elements[512];

template <typename Value>
Value* values() {
  return static_cast<Value*>(static_cast<void*>(memory));
}

template <typename Value>
Value* second_values() {
  return static_cast<Value*>(static_cast<void*>(second_memory));
}

class Allocation : public EngineTest {
 protected:
  // The C library allocates a stream's buffer at its first use.
  Allocation() {
    printed_by([] {
      std::printf("%s\n", "warm");
      std::fprintf(stderr, "%s\n", "warm");
    });
  }

  template <typename Call>
  static void expect_none(const char* name, const Call& call) {
    printed_by([&] {
      allocations = 0;
      counting = true;
      call();
      counting = false;
    });
    EXPECT_EQ(allocations, 0U) << name;
  }
};

struct Bus {
  int transfers = 0;
  int failing = -1;
};

std::int32_t move(DeRegElement_S* /*elements*/, std::uint32_t /*count*/, void* user) {
  Bus& bus = *static_cast<Bus*>(user);
  return bus.transfers++ == bus.failing ? -1 : 0;
}

TEST_F(Allocation, CounterSeesAllocations) {
  allocations = 0;
  counting = true;
  void* volatile object = ::operator new(1);
  void* volatile objects = ::operator new[](1);
  counting = false;
  ::operator delete(object);
  ::operator delete[](objects);
#ifdef VQ3900_TEST_COUNTS_MALLOC
  EXPECT_EQ(allocations, 4U);  // each reached malloc as well
#else
  EXPECT_EQ(allocations, 2U);
#endif
}

TEST_F(Allocation, SetEntryPointsAllocateNothingOnAnyPath) {
  for (const SetEntry& entry : set_entries()) {
    reset_engine();
    expect_none(entry.name, entry.call);  // not registered
    Bus bus;
    de_register_read_write_functon(move, move, &bus);
    expect_none(entry.name, entry.call);  // not prepared
    entry.prepare();
    for (const auto& call : entry.with_a_null)
      expect_none(entry.name, call);
    for (bus.failing = 0; bus.failing < 3; ++bus.failing) {
      bus.transfers = 0;
      expect_none(entry.name, entry.call);
    }
    EXPECT_EQ(bus.transfers, static_cast<int>(entry.writes.size()));
  }
}

TEST_F(Allocation, GetEntryPointsAllocateNothingOnAnyPath) {
  for (const GetEntry& entry : get_entries()) {
    reset_engine();
    const auto call = [&entry] { entry.call(memory, second_memory); };
    expect_none(entry.name, call);
    entry.prepare();
    Bus bus;
    de_register_read_write_functon(move, move, &bus);
    expect_none(entry.name, [&entry] { entry.call(nullptr, nullptr); });
    for (bus.failing = 0; bus.failing < 4; ++bus.failing) {
      bus.transfers = 0;
      expect_none(entry.name, call);
    }
    EXPECT_EQ(bus.transfers, static_cast<int>(entry.reads.size()));
  }
}

TEST_F(Allocation, OverflowMessagesAllocateNothing) {
  Bus bus;
  de_register_read_write_functon(move, move, &bus);
  DeBasicParams_S basic = sample::basic();
  basic.ref_plane_dist = 0;
  basic.pbf = 3e38F;
  expect_none("basic", [&] { de_set_baisc_params_to_registers(&basic); });
  sample::set_rectification();
  DeRectifyParams_S rectify = sample::rectify();
  const DeRectifyCtrlParams_S ctrl = sample::rectify_ctrl();
  rectify.cam0.fx = -3e38F;
  expect_none("rectify", [&] { de_set_rectify_params_to_registers(&rectify, &ctrl); });
}

struct NamedCall {
  const char* name;
  void (*call)();
};

// A size that is right, one that is too large, and an element that is not the table's.
template <auto Copy, auto Update, std::uint16_t Size>
void move_table() {
  constexpr auto kMerged = static_cast<std::uint8_t>(Size);
  Copy(elements, Size);
  Copy(elements, Size + 1);
  Update(elements, kMerged);
  Update(elements, kMerged + 1);
  elements[1].address = 0;
  Update(elements, kMerged);
}

const NamedCall kTableFunctions[] = {
    {"basic_d2c_d2d_ctrl",
     move_table<de_copy_basic_d2c_d2d_ctrl_register_table, de_update_basic_d2c_d2d_ctrl_register_table, 5>},
    {"d2d_params", move_table<de_copy_d2d_params_register_table, de_update_d2d_params_register_table, 2>},
    {"d2c_params", move_table<de_copy_d2c_params_register_table, de_update_d2c_params_register_table, 12>},
    {"prefilter", move_table<de_copy_prefilter_register_table, de_update_prefilter_register_table, 18>},
    {"extend_chop", move_table<de_copy_extend_chop_register_table, de_update_extend_chop_register_table, 7>},
    {"disp_calc", move_table<de_copy_disp_calc_register_table, de_update_disp_calc_register_table, 12>},
    {"gpm", move_table<de_copy_gpm_register_table, de_update_gpm_register_table, 30>},
    {"gp_status", move_table<de_copy_gp_status_register_table, de_update_gp_status_register_table, 261>},
    {"rectify_ctrl", move_table<de_copy_rectify_ctrl_register_table, de_update_rectify_ctrl_register_table, 3>},
    {"rectify_params", move_table<de_copy_rectify_params_register_table, de_update_rectify_params_register_table, 23>},
    {"sbg2r_params", move_table<de_copy_sbg2r_params_register_table, de_update_sbg2r_params_register_table, 23>},
    {"rectify_lut_info",
     [] {
       de_copy_rectify_lut_info_register_table(1, elements, 7);
       de_copy_rectify_lut_info_register_table(0, elements, 8);
     }},
};

const NamedCall kFrame[] = {
    {"de_register_read_write_functon", [] { de_register_read_write_functon(move, nullptr, nullptr); }},
    {"de_get_error_str", [] { de_get_error_str(); }},
    {"de_get_version", [] { de_get_version(); }},
    {"driver_helper_get_version", [] { driver_helper_get_version(); }},
    {"get_depth_driver_helper_version", [] { get_depth_driver_helper_version(values<char>()); }},
    {"get_disto_lut_version", [] { get_disto_lut_version(values<char>()); }},
    {"get_lut_version", [] { get_lut_version(values<char>()); }},
};

const NamedCall kFixedPoint[] = {
    {"de_get_reg_field", [] { de_get_reg_field(1, 2); }},
    {"de_set_reg_field", [] { de_set_reg_field(1, 2, 3); }},
    {"de_float_to_fixed", [] { de_float_to_fixed(0.5, 8, 4, "x"); }},
    {"de_float_to_fixed, overflow", [] { de_float_to_fixed(-1e308, 8, 4, "x"); }},
    {"de_fixed_to_float", [] { de_fixed_to_float(1, 8, 4, values<double>()); }},
    {"de_fixed_to_float_sign", [] { de_fixed_to_float_sign(1, true, 8, 4, values<double>()); }},
};

const NamedCall kBasic[] = {
    {"set_camera_mode", [] { set_camera_mode(1, 1); }},
    {"set_camera_mode, refused", [] { set_camera_mode(2, 1); }},
    {"get_camera_mode", [] { get_camera_mode(values<uint32_t>()); }},
    {"set_upsample", [] { set_upsample(1, 2); }},
    {"get_upsample", [] { get_upsample(); }},
    {"get_scale_mode", [] { get_scale_mode(values<uint32_t>()); }},
    {"get_ref_plane_dist", [] { get_ref_plane_dist(values<float>()); }},
    {"get_pbf", [] { get_pbf(values<float>()); }},
    {"set_ref_plane_dist", [] { set_ref_plane_dist(1000); }},
    {"set_input_ir_resolution", [] { set_input_ir_resolution(0x03200500); }},
    {"set_pbf_params", [] { set_pbf_params(50, 600); }},
    {"set_pbf_params, baseline refused", [] { set_pbf_params(0.5F, 600); }},
    {"set_pbf_params, focal length refused", [] { set_pbf_params(50, 5); }},
    {"de_update_basic_params", [] { de_update_basic_params(values<DeBasicParams_S>()); }},
    {"de_copy_basic_params", [] { de_copy_basic_params(values<DeBasicParams_S>()); }},
    {"convert_basic_config_to_registers", [] { convert_basic_config_to_registers(); }},
    {"convert_basic_register_to_params", [] { convert_basic_register_to_params(); }},
};

const NamedCall kD2cAndD2d[] = {
    {"set_d2c_config", [] { set_d2c_config(2, 0.3F, 1, 2, 1); }},
    {"set_d2c_params", [] { set_d2c_params(1, 0.3F, 1, 2); }},
    {"set_d2c_calib_params",
     [] { set_d2c_calib_params(&sample::kDepth.fx, &sample::kColor.fx, sample::kPose.rotation); }},
    {"get_d2c_params", [] { get_d2c_params(values<D2cConfig>(), second_values<double>()); }},
    {"de_copy_d2c_config", [] { de_copy_d2c_config(values<D2cConfig>()); }},
    {"de_update_d2c_config", [] { de_update_d2c_config(values<D2cConfig>()); }},
    {"convert_d2c_ctrl_to_register_elements", [] { convert_d2c_ctrl_to_register_elements(); }},
    {"convert_d2c_params_to_register_elements", [] { convert_d2c_params_to_register_elements(); }},
    {"convert_W_mat_register_to_float", [] { convert_W_mat_register_to_float(); }},
    {"convert_d2c_register_to_params_cfg", [] { convert_d2c_register_to_params_cfg(); }},
    {"set_d2d_unit", [] { set_d2d_unit(4); }},
    {"set_d2d_unit, refused", [] { set_d2d_unit(5); }},
    {"set_hw_d2d_enable", [] { set_hw_d2d_enable(true); }},
    {"get_d2d_config", [] { get_d2d_config(values<D2dConfig>()); }},
    {"de_update_d2d_config", [] { de_update_d2d_config(values<D2dConfig>()); }},
    {"convert_d2d_config_to_register_element", [] { convert_d2d_config_to_register_element(); }},
    {"convert_d2d_register_to_config", [] { convert_d2d_register_to_config(); }},
    {"convert_d2d_params_to_register_elements", [] { convert_d2d_params_to_register_elements(); }},
};

const NamedCall kDisparity[] = {
    {"set_depth_engine_win_size", [] { set_depth_engine_win_size(9); }},
    {"get_depth_engine_win_size", [] { get_depth_engine_win_size(values<uint32_t>()); }},
    {"set_min_disp", [] { set_min_disp(-8); }},
    {"get_min_disp", [] { get_min_disp(values<uint8_t>()); }},
    {"set_grow_match_params", [] { set_grow_match_params(values<DeGrowMatchParams_S>()); }},
    {"get_grow_match_params", [] { get_grow_match_params(values<DeGrowMatchParams_S>()); }},
    {"set_shadow_check_params", [] { set_shadow_check_params(values<DeShadowCheckParams_S>()); }},
    {"get_shadow_check_params", [] { get_shadow_check_params(values<DeShadowCheckParams_S>()); }},
    {"set_arm_short_params", [] { set_arm_short_params(values<DeArmShortParams_S>()); }},
    {"get_arm_short_params", [] { get_arm_short_params(values<DeArmShortParams_S>()); }},
    {"set_tile_width_overlap", [] { set_tile_width_overlap(values<DeTileParams_S>()); }},
    {"get_tile_width_overlap", [] { get_tile_width_overlap(values<DeTileParams_S>()); }},
    {"set_seed_params", [] { set_seed_params(values<DeSeedParams_S>()); }},
    {"get_seed_params", [] { get_seed_params(values<DeSeedParams_S>()); }},
    {"set_lrc_params",
     [] {
       set_lrc_params({1, 2});
     }},
    {"get_lrc_params", [] { get_lrc_params(values<DeLrcParams_S>()); }},
    {"set_smoothfilter_params", [] { set_smoothfilter_params(values<DeSmoothFilterParams_S>()); }},
    {"get_smoothfilter_params", [] { get_smoothfilter_params(values<DeSmoothFilterParams_S>()); }},
    {"set_subpixel_coef", [] { set_subpixel_coef(values<double>()); }},
    {"get_subpixel_coef",
     [] {
       double* coefficients = values<double>();
       get_subpixel_coef(&coefficients);
     }},
    {"de_update_disp_calc_params", [] { de_update_disp_calc_params(values<DeDispCalcParams_S>()); }},
    {"de_copy_disp_calc_params", [] { de_copy_disp_calc_params(values<DeDispCalcParams_S>()); }},
    {"convert_calc_disp_float_to_registers", [] { convert_calc_disp_float_to_registers(); }},
    {"convert_calc_disp_registers_to_float", [] { convert_calc_disp_registers_to_float(); }},
};

void set_chop() {
  set_extend_chop_params(values<int32_t>(), values<int32_t>(), values<int32_t>());
}

const NamedCall kGeometry[] = {
    {"set_extend_chop_params, no image size", set_chop},
    {"set_prefilter_size_speckleTh", [] { set_prefilter_size_speckleTh(9, 1); }},
    {"set_prefilter_size_speckleTh, refused", [] { set_prefilter_size_speckleTh(6, 1); }},
    {"get_prefilter_size_speckleTh",
     [] { get_prefilter_size_speckleTh(values<uint32_t>(), second_values<uint8_t>()); }},
    {"get_prefilter_img_size", [] { get_prefilter_img_size(values<uint32_t>()); }},
    {"set_extend_chop_params", set_chop},
    {"get_extend_chop_params", [] { get_extend_chop_params(values<int32_t>(), second_values<int32_t>()); }},
    {"de_update_prefilter_params", [] { de_update_prefilter_params(values<DePrefilterParams_S>()); }},
    {"de_copy_prefilter_params", [] { de_copy_prefilter_params(values<DePrefilterParams_S>()); }},
    {"de_update_extend_chop_params", [] { de_update_extend_chop_params(values<DeExtendChopParams_S>()); }},
    {"de_copy_extend_chop_params", [] { de_copy_extend_chop_params(values<DeExtendChopParams_S>()); }},
    {"convert_prefilter_float_to_registers", [] { convert_prefilter_float_to_registers(); }},
    {"convert_prefilter_registers_to_float", [] { convert_prefilter_registers_to_float(); }},
    {"convert_extend_chop_float_to_registers", [] { convert_extend_chop_float_to_registers(); }},
    {"convert_extend_chop_registers_to_float", [] { convert_extend_chop_registers_to_float(); }},
};

const NamedCall kGlobalPoints[] = {
    {"set_gpm_enable", [] { set_gpm_enable(1); }},
    {"set_x_y_coordinates", [] { set_x_y_coordinates(values<int32_t>(), values<int32_t>()); }},
    {"set_gpm_enable_columns", [] { set_gpm_enable_columns(values<uint16_t>(), 16); }},
    {"set_gpm_config", [] { set_gpm_config(values<DeGpmConfig_S>(), 1); }},
    {"get_gpm_params", [] { get_gpm_params(values<DeGpmParams_S>()); }},
    {"de_copy_gpm_params", [] { de_copy_gpm_params(values<DeGpmParams_S>()); }},
    {"de_update_gpm_params", [] { de_update_gpm_params(values<DeGpmParams_S>()); }},
    {"get_global_points_status", [] { get_global_points_status(memory); }},
    {"de_copy_gp_status_params", [] { de_copy_gp_status_params(memory); }},
    {"de_update_gp_status_params", [] { de_update_gp_status_params(); }},
    {"convert_gpm_float_to_registers", [] { convert_gpm_float_to_registers(); }},
    {"convert_gpm_registers_to_float", [] { convert_gpm_registers_to_float(); }},
    {"convert_gp_status_registers_to_float", [] { convert_gp_status_registers_to_float(); }},
};

void set_brown() {
  const float rotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float distortion[8] = {};
  set_rectify_params_brown(1, &sample::kDepth, distortion, rotation, &sample::kDepth.fx);
}

const NamedCall kRectify[] = {
    {"convert_rectify_params_to_register_elements, not set", [] { convert_rectify_params_to_register_elements(); }},
    {"set_rectify_status", [] { set_rectify_status(0, 1, 32); }},
    {"set_rectify_status, refused", [] { set_rectify_status(1, 1, 32); }},
    {"set_rectify_common", [] { set_rectify_common(1); }},
    {"set_rectify_kk_lut", [] { set_rectify_kk_lut(2); }},
    {"set_rectify_sbg2r_config", [] { set_rectify_sbg2r_config(0, 1, 1, 1); }},
    {"set_rectify_params_brown", set_brown},
    {"convert_rectify_params_to_register_elements", [] { convert_rectify_params_to_register_elements(); }},
    {"convert_rectify_control_float_to_register", [] { convert_rectify_control_float_to_register(); }},
    {"convert_rectify_registers_to_float", [] { convert_rectify_registers_to_float(true); }},
    {"de_copy_rectify_params",
     [] { de_copy_rectify_params(values<DeRectifyParams_S>(), second_values<DeRectifyCtrlParams_S>()); }},
    {"de_update_rectify_params",
     [] { de_update_rectify_params(values<DeRectifyParams_S>(), second_values<DeRectifyCtrlParams_S>()); }},
};

const NamedCall kConfiguration[] = {
    {"set_depth_engine_config", [] { set_depth_engine_config(); }},
    {"de_copy_dpu_mode_config", [] { de_copy_dpu_mode_config(values<dpu_mode>(), second_values<uint32_t>()); }},
    {"get_dpu_scheme_config", [] { get_dpu_scheme_config(values<dpu_scheme_config>()); }},
};

TEST_F(Allocation, NoOtherFunctionAllocates) {
  for (const std::span<const NamedCall> family : {std::span<const NamedCall>(kTableFunctions),
                                                  {kFrame},
                                                  {kFixedPoint},
                                                  {kBasic},
                                                  {kD2cAndD2d},
                                                  {kDisparity},
                                                  {kGeometry},
                                                  {kGlobalPoints},
                                                  {kRectify},
                                                  {kConfiguration}}) {
    for (const NamedCall& named : family)
      expect_none(named.name, named.call);
  }
}

}  // namespace
}  // namespace vq3900::test
