#include "config/config_image.h"

#include <algorithm>

#include "bytes/crc32.h"

namespace vq3900 {

namespace {

using File = RegisterFile;

constexpr auto kRegisterFileLayout = std::to_array<LayoutRow<File>>({
    field_at<&File::d2d_count>(0, "d2d_params.count"),
    field_at<&File::d2d>(4, "d2d_params"),
    filler_at<File>(28, 4),
    field_at<&File::control_count>(32, "basic_d2c_d2d_ctrl.count"),
    field_at<&File::control>(36, "basic_d2c_d2d_ctrl"),
    filler_at<File>(96, 16),
    field_at<&File::prefilter_count>(112, "prefilter.count"),
    field_at<&File::prefilter>(116, "prefilter"),
    filler_at<File>(332, 4),
    field_at<&File::extend_chop_count>(336, "extend_chop.count"),
    field_at<&File::extend_chop>(340, "extend_chop"),
    filler_at<File>(424, 8),
    field_at<&File::disparity_count>(432, "disp_calc.count"),
    field_at<&File::disparity>(436, "disp_calc"),
    field_at<&File::last_disparity_address>(568, "disp_calc.last_address"),
    field_at<&File::last_disparity_mask>(572, "disp_calc.last_mask"),
    field_at<&File::gpm_count>(576, "gpm.count"),  // takes the place of the last disparity register's value
    field_at<&File::gpm>(580, "gpm"),              // the device takes 29 registers from here: the file ends
});
static_assert(complete(kRegisterFileLayout, kRegisterFileSize));

using Header = ConfigSectionHeader;

constexpr auto kHeaderLayout = std::to_array<LayoutRow<Header>>({
    field_at<&Header::magic>(0, "magic"),
    field_at<&Header::crc>(4, "crc32"),
    field_at<&Header::length>(8, "length"),
    field_at<&Header::address>(12, "flash_address"),
    field_at<&Header::format>(16, "format"),
    field_at<&Header::stamp>(20, "version_or_time"),
    field_at<&Header::item_magic>(24, "item_magic"),
    field_at<&Header::item_count>(28, "item_count"),
    field_at<&Header::item_size>(32, "item_size"),
});
static_assert(complete(kHeaderLayout, kConfigHeaderSize));

constexpr std::uint32_t kCrcOffset = 4;

using Scheme = dpu_scheme_config;

constexpr auto kDpuLayout = std::to_array<LayoutRow<DpuItem>>({
    field_at<&DpuItem::md5>(0, "md5"),
    field_at<&DpuItem::mode, &dpu_mode::dpu_desc>(16, "mode.dpu_desc"),
    field_at<&DpuItem::mode, &dpu_mode::laser_type>(32, "mode.laser_type"),
    field_at<&DpuItem::mode, &dpu_mode::in_ir_res>(36, "mode.in_ir_res"),
    field_at<&DpuItem::mode, &dpu_mode::rectify_out_valid_res>(40, "mode.rectify_out_valid_res"),
    field_at<&DpuItem::mode, &dpu_mode::chop_out_res>(44, "mode.chop_out_res"),
    field_at<&DpuItem::control>(48, "basic_d2c_d2d_ctrl"),
    field_at<&DpuItem::rectify_ctrl>(108, "rectify_ctrl"),
    field_at<&DpuItem::prefilter>(144, "prefilter"),
    field_at<&DpuItem::extend_chop>(360, "extend_chop"),
    field_at<&DpuItem::disparity>(444, "disp_calc"),
    field_at<&DpuItem::gpm>(588, "gpm"),
    filler_at<DpuItem>(948, 12),
    field_at<&DpuItem::scheme, &Scheme::disp_offset>(960, "scheme.disp_offset"),
    field_at<&DpuItem::scheme, &Scheme::d2d_params_unit>(964, "scheme.d2d_params_unit"),
    field_at<&DpuItem::scheme, &Scheme::ref_dist>(968, "scheme.ref_dist"),
    field_at<&DpuItem::scheme, &Scheme::scheme_flags>(972, "scheme.scheme_flags"),
    field_at<&DpuItem::scheme, &Scheme::reserved>(976, "scheme.reserved"),
});
static_assert(complete(kDpuLayout, kDpuSection.item_size));

using D2c = d2c_cfg_item;

constexpr auto kD2cLayout = std::to_array<LayoutRow<D2c>>({
    field_at<&D2c::md5>(0, "md5"),
    field_at<&D2c::desc>(16, "desc"),
    field_at<&D2c::res_chop_out>(32, "res_chop_out"),
    field_at<&D2c::res_depth>(36, "res_depth"),
    field_at<&D2c::res_rgb>(40, "res_rgb"),
    field_at<&D2c::d2d_params_unit>(44, "d2d_params_unit"),
    field_at<&D2c::mipi_channel_status>(48, "mipi_channel_status"),
    field_at<&D2c::res_d2c_in>(52, "res_d2c_in"),
    field_at<&D2c::res_d2c_valid>(56, "res_d2c_valid"),
    field_at<&D2c::scale>(60, "scale"),
    field_at<&D2c::extend>(64, "extend"),
});
static_assert(complete(kD2cLayout, kD2cSection.item_size));

using IrPre = ir_pre_cfg_item;

constexpr auto kIrPreLayout = std::to_array<LayoutRow<IrPre>>({
    field_at<&IrPre::md5>(0, "md5"),
    field_at<&IrPre::dpu_desc>(16, "dpu_desc"),
    field_at<&IrPre::reserved>(32, "reserved"),
    field_at<&IrPre::exp_time_range>(36, "exp_time_range"),
    field_at<&IrPre::gain_range>(52, "gain_range"),
    field_at<&IrPre::laser_current_range>(68, "laser_current_range"),
    field_at<&IrPre::target_brightness>(84, "target_brightness"),
    field_at<&IrPre::target_th>(88, "target_th"),
    field_at<&IrPre::center_weight>(92, "center_weight"),
    field_at<&IrPre::skip_frame>(96, "skip_frame"),
    field_at<&IrPre::smooth_steps>(100, "smooth_steps"),
    field_at<&IrPre::delay_ms>(104, "delay_ms"),
    field_at<&IrPre::meter_method>(108, "meter_method"),
    field_at<&IrPre::enable_bits>(112, "enable_bits"),
    field_at<&IrPre::roi_size>(116, "roi_size"),
    field_at<&IrPre::box_cnt>(120, "box_cnt"),
    field_at<&IrPre::box_weight_16>(124, "box_weight_16"),
});
static_assert(complete(kIrPreLayout, kIrPreSection.item_size));

}  // namespace

std::span<const LayoutRow<RegisterFile>> register_file_layout() {
  return kRegisterFileLayout;
}

std::span<const LayoutRow<ConfigSectionHeader>> config_header_layout() {
  return kHeaderLayout;
}

std::span<const LayoutRow<DpuItem>> dpu_item_layout() {
  return kDpuLayout;
}

std::span<const LayoutRow<d2c_cfg_item>> d2c_item_layout() {
  return kD2cLayout;
}

std::span<const LayoutRow<ir_pre_cfg_item>> ir_pre_item_layout() {
  return kIrPreLayout;
}

std::array<std::uint8_t, kRegisterFileSize> build_register_file(const RegisterTables& tables) {
  RegisterFile file;
  file.d2d_count = VQ3900_D2D_REGISTERS;
  file.d2d = tables.d2d;
  file.control_count = VQ3900_BASIC_CTRL_REGISTERS;
  file.control = tables.basic_ctrl;
  file.prefilter_count = VQ3900_PREFILTER_REGISTERS;
  file.prefilter = tables.prefilter;
  file.extend_chop_count = VQ3900_EXTEND_CHOP_REGISTERS;
  file.extend_chop = tables.extend_chop;
  file.disparity_count = VQ3900_DISP_CALC_REGISTERS;
  std::copy_n(tables.disp_calc.begin(), file.disparity.size(), file.disparity.begin());
  file.last_disparity_address = tables.disp_calc.back().address;
  file.last_disparity_mask = tables.disp_calc.back().mask;
  file.gpm_count = VQ3900_GPM_REGISTERS;
  std::copy_n(tables.gpm.begin(), file.gpm.size(), file.gpm.begin());

  std::array<std::uint8_t, kRegisterFileSize> bytes{};
  write_record(kRegisterFileLayout, file, bytes);
  return bytes;
}

ConfigSectionHeader read_config_header(std::span<const std::uint8_t> section) {
  ConfigSectionHeader header;
  read_record(kHeaderLayout, section, header);
  return header;
}

std::span<std::uint8_t> ConfigSectionWriter::next_item() {
  const std::size_t at = kConfigHeaderSize + std::size_t{count_} * section_.item_size;
  ++count_;
  return room_.subspan(at, section_.item_size);
}

void ConfigSectionWriter::close(std::uint32_t stamp) {
  ConfigSectionHeader header;
  header.magic = section_.magic;
  header.length = static_cast<std::uint32_t>(kConfigHeaderSize) + count_ * section_.item_size;
  header.address = section_.address;
  header.stamp = stamp;
  header.item_magic = section_.item_magic;
  header.item_count = count_;
  header.item_size = section_.item_size;
  write_record(kHeaderLayout, header, room_);
  store_little(crc32(0, room_.data(), header.length), &room_[kCrcOffset]);
}

void write_item(const DpuItem& item, std::span<std::uint8_t> to) {
  write_record(kDpuLayout, item, to);
}

void write_item(const d2c_cfg_item& item, std::span<std::uint8_t> to) {
  write_record(kD2cLayout, item, to);
}

void write_item(const ir_pre_cfg_item& item, std::span<std::uint8_t> to) {
  write_record(kIrPreLayout, item, to);
}

}  // namespace vq3900
