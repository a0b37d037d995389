#include "regs/snapshot.h"

namespace vq3900 {

namespace {

using Basic = DeBasicParams_S;
using Prefilter = DePrefilterParams_S;
using ExtendChop = DeExtendChopParams_S;
using Disparity = DeDispCalcParams_S;
using Gpm = DeGpmParams_S;

// The records as they lie in memory, padding included, without any alignment between them.
constexpr auto kLayout = std::to_array<LayoutRow<Snapshot>>({
    field_at<&Snapshot::basic, &Basic::baseline>(0, "basic.baseline"),
    field_at<&Snapshot::basic, &Basic::focal_length_pix>(4, "basic.focal_length_pix"),
    field_at<&Snapshot::basic, &Basic::cam_mode>(8, "basic.cam_mode"),
    field_at<&Snapshot::basic, &Basic::depth_mode>(12, "basic.depth_mode"),
    padding_at<13, 3, &Snapshot::basic>(13),
    field_at<&Snapshot::basic, &Basic::ref_plane_dist>(16, "basic.ref_plane_dist"),
    field_at<&Snapshot::basic, &Basic::upsample_enable>(20, "basic.upsample_enable"),
    padding_at<21, 3, &Snapshot::basic>(21),
    field_at<&Snapshot::basic, &Basic::pbf>(24, "basic.pbf"),
    field_at<&Snapshot::basic, &Basic::upsample_aux_en>(28, "basic.upsample_aux_en"),
    field_at<&Snapshot::basic, &Basic::upsample_main_en>(29, "basic.upsample_main_en"),
    padding_at<30, 2, &Snapshot::basic>(30),
    field_at<&Snapshot::basic, &Basic::scale_mode>(32, "basic.scale_mode"),
    field_at<&Snapshot::basic, &Basic::in_ir_width>(36, "basic.in_ir_width"),
    field_at<&Snapshot::basic, &Basic::in_ir_height>(38, "basic.in_ir_height"),
    field_at<&Snapshot::basic, &Basic::sbg2r_rotate>(40, "basic.sbg2r_rotate"),

    field_at<&Snapshot::prefilter, &Prefilter::pre_win_size>(44, "prefilter.pre_win_size"),
    field_at<&Snapshot::prefilter, &Prefilter::speckleTh>(45, "prefilter.speckleTh"),

    field_at<&Snapshot::extend_chop, &ExtendChop::extend_ref>(46, "extend_chop.extend_ref"),
    field_at<&Snapshot::extend_chop, &ExtendChop::chop>(62, "extend_chop.chop"),
    field_at<&Snapshot::extend_chop, &ExtendChop::extend_tar>(78, "extend_chop.extend_tar"),

    field_at<&Snapshot::disparity, &Disparity::win_size>(94, "disparity.win_size"),
    field_at<&Snapshot::disparity, &Disparity::min_disparity>(98, "disparity.min_disparity"),
    field_at<&Snapshot::disparity, &Disparity::cost_strong_t>(102, "disparity.cost_strong_t"),
    field_at<&Snapshot::disparity, &Disparity::cost_weak_t>(106, "disparity.cost_weak_t"),
    field_at<&Snapshot::disparity, &Disparity::conf_region_t>(110, "disparity.conf_region_t"),
    field_at<&Snapshot::disparity, &Disparity::conf_strong_t>(114, "disparity.conf_strong_t"),
    field_at<&Snapshot::disparity, &Disparity::conf_grow_t>(118, "disparity.conf_grow_t"),
    field_at<&Snapshot::disparity, &Disparity::grow_disp_diff_thr>(122, "disparity.grow_disp_diff_thr"),
    field_at<&Snapshot::disparity, &Disparity::shadow_en>(126, "disparity.shadow_en"),
    field_at<&Snapshot::disparity, &Disparity::shadow_ring_base>(127, "disparity.shadow_ring_base"),
    padding_at<34, 2, &Snapshot::disparity>(128),
    field_at<&Snapshot::disparity, &Disparity::shadow_win_size>(130, "disparity.shadow_win_size"),
    field_at<&Snapshot::disparity, &Disparity::shadow_smooth_size>(134, "disparity.shadow_smooth_size"),
    field_at<&Snapshot::disparity, &Disparity::shadow_tex_thresh>(138, "disparity.shadow_tex_thresh"),
    field_at<&Snapshot::disparity, &Disparity::shadow_diff_per>(142, "disparity.shadow_diff_per"),
    field_at<&Snapshot::disparity, &Disparity::shadow_edge_preserving>(146, "disparity.shadow_edge_preserving"),
    field_at<&Snapshot::disparity, &Disparity::cost_shadow1_t>(150, "disparity.cost_shadow1_t"),
    field_at<&Snapshot::disparity, &Disparity::cost_shadow2_t>(154, "disparity.cost_shadow2_t"),
    field_at<&Snapshot::disparity, &Disparity::arm_len>(158, "disparity.arm_len"),
    field_at<&Snapshot::disparity, &Disparity::arm_short_en>(162, "disparity.arm_short_en"),
    field_at<&Snapshot::disparity, &Disparity::arm_short_mask>(166, "disparity.arm_short_mask"),
    field_at<&Snapshot::disparity, &Disparity::tile_width>(170, "disparity.tile_width"),
    field_at<&Snapshot::disparity, &Disparity::tile_overlap_x>(174, "disparity.tile_overlap_x"),
    field_at<&Snapshot::disparity, &Disparity::tile_overlap_x_fast>(178, "disparity.tile_overlap_x_fast"),
    field_at<&Snapshot::disparity, &Disparity::tile_overlap_y_traverse>(182, "disparity.tile_overlap_y_traverse"),
    field_at<&Snapshot::disparity, &Disparity::lrc_en>(186, "disparity.lrc_en"),
    field_at<&Snapshot::disparity, &Disparity::lrc_thresh>(190, "disparity.lrc_thresh"),
    field_at<&Snapshot::disparity, &Disparity::max_see_num>(194, "disparity.max_see_num"),
    field_at<&Snapshot::disparity, &Disparity::max_seed_try_num>(198, "disparity.max_seed_try_num"),
    field_at<&Snapshot::disparity, &Disparity::max_seed_valid_try_num>(202, "disparity.max_seed_valid_try_num"),
    field_at<&Snapshot::disparity, &Disparity::smooth_enable>(206, "disparity.smooth_enable"),
    field_at<&Snapshot::disparity, &Disparity::smooth_win_size>(207, "disparity.smooth_win_size"),
    field_at<&Snapshot::disparity, &Disparity::smooth_enable_flag>(208, "disparity.smooth_enable_flag"),
    padding_at<115, 5, &Snapshot::disparity>(209),
    field_at<&Snapshot::disparity, &Disparity::sp_coef>(214, "disparity.sp_coef"),

    field_at<&Snapshot::gpm, &Gpm::enable>(246, "gpm.enable"),
    field_at<&Snapshot::gpm, &Gpm::enable_mirror>(247, "gpm.enable_mirror"),
    padding_at<2, 2, &Snapshot::gpm>(248),
    field_at<&Snapshot::gpm, &Gpm::x_coordinate>(250, "gpm.x_coordinate"),
    field_at<&Snapshot::gpm, &Gpm::y_coordinate>(314, "gpm.y_coordinate"),
    field_at<&Snapshot::gpm, &Gpm::enable_bits_per_row>(378, "gpm.enable_bits_per_row"),
    field_at<&Snapshot::gpm, &Gpm::gp_enabled_cols>(410, "gpm.gp_enabled_cols"),
    field_at<&Snapshot::gpm, &Gpm::gp_col_enabled>(411, "gpm.gp_col_enabled"),
    padding_at<181, 3, &Snapshot::gpm>(427),
    field_at<&Snapshot::gpm, &Gpm::texture_t0>(430, "gpm.texture_t0"),
    field_at<&Snapshot::gpm, &Gpm::texture_t1>(434, "gpm.texture_t1"),
    field_at<&Snapshot::gpm, &Gpm::active_t>(438, "gpm.active_t"),
    field_at<&Snapshot::gpm, &Gpm::ncost_t>(442, "gpm.ncost_t"),
    field_at<&Snapshot::gpm, &Gpm::hist_dy_dist>(446, "gpm.hist_dy_dist"),
    field_at<&Snapshot::gpm, &Gpm::gp_ref_dy_t_neg>(450, "gpm.gp_ref_dy_t_neg"),
    field_at<&Snapshot::gpm, &Gpm::gp_ref_dy_t>(454, "gpm.gp_ref_dy_t"),
    field_at<&Snapshot::gpm, &Gpm::gpm_config_flag>(458, "gpm.gpm_config_flag"),
    padding_at<213, 3, &Snapshot::gpm>(459),
});
static_assert(complete(kLayout, kSnapshotSize));

}  // namespace

std::span<const LayoutRow<Snapshot>> snapshot_layout() {
  return kLayout;
}

std::array<std::uint8_t, kSnapshotSize> write_snapshot(const Snapshot& snapshot) {
  std::array<std::uint8_t, kSnapshotSize> bytes{};
  write_record(kLayout, snapshot, bytes);
  return bytes;
}

void read_snapshot(std::span<const std::uint8_t, kSnapshotSize> bytes, Snapshot& snapshot) {
  read_record(kLayout, bytes, snapshot);
}

}  // namespace vq3900
