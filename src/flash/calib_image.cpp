#include "flash/calib_image.h"

namespace vq3900 {

namespace {

using Header = SectionHeader;

constexpr auto kHeaderLayout = std::to_array<LayoutRow<Header>>({
    field_at<&Header::tag>(0, "tag"),
    field_at<&Header::crc>(4, "crc32"),
    field_at<&Header::length>(8, "length"),
    field_at<&Header::address>(12, "address"),
    field_at<&Header::format>(16, "format"),
    field_at<&Header::time>(20, "time"),
    field_at<&Header::serial_number>(24, "serial_number"),
    field_at<&Header::array_tag>(48, "array_tag"),
    field_at<&Header::count>(52, "count"),
    field_at<&Header::record_size>(56, "record_size"),
});
static_assert(complete(kHeaderLayout, kSectionHeaderSize));
static_assert(kHeaderLayout[7].offset == kShortHeaderSize);

using Rectify = RectifyRecord;
using Rect = DeStereoRectifyParams_S;

constexpr auto kRectifyLayout = std::to_array<LayoutRow<Rectify>>({
    field_at<&Rectify::md5>(0, "md5"),
    field_at<&Rectify::key, &RectifyKey::width>(16, "key.width"),
    field_at<&Rectify::key, &RectifyKey::height>(18, "key.height"),
    field_at<&Rectify::key, &RectifyKey::reserved>(20, "key.reserved"),
    field_at<&Rectify::key, &RectifyKey::mipi_channel>(24, "key.mipi_channel"),
    field_at<&Rectify::rectify_params>(28, "rectify_params"),
    field_at<&Rectify::sbg2r_params>(376, "sbg2r_params"),
    field_at<&Rectify::rect, &Rect::cam1_rectified>(724, "cam1_rectified"),
    field_at<&Rectify::rect, &Rect::cam1_distortion>(744, "cam1_distortion"),
    field_at<&Rectify::rect, &Rect::cam1_rotation>(776, "cam1_rotation"),
    field_at<&Rectify::rect, &Rect::cam0_rectified>(812, "cam0_rectified"),
    field_at<&Rectify::rect, &Rect::cam0_distortion>(832, "cam0_distortion"),
    field_at<&Rectify::rect, &Rect::cam0_rotation>(864, "cam0_rotation"),
    field_at<&Rectify::rect, &Rect::cam1>(900, "cam1"),
    field_at<&Rectify::rect, &Rect::cam0>(920, "cam0"),
    field_at<&Rectify::rect, &Rect::left_temperature>(940, "left_temperature"),
    field_at<&Rectify::rect, &Rect::right_temperature>(944, "right_temperature"),
    field_at<&Rectify::rect, &Rect::ldm_temperature>(948, "ldm_temperature"),
    field_at<&Rectify::rect, &Rect::left_comp_coeff>(952, "left_comp_coeff"),
    field_at<&Rectify::rect, &Rect::right_comp_coeff>(956, "right_comp_coeff"),
    field_at<&Rectify::rect, &Rect::ldm_comp_coeff>(960, "ldm_comp_coeff"),
});
static_assert(complete(kRectifyLayout, kRectifySection.record_size));

using D2c = DeCameraD2CParams_S;

constexpr auto kD2cLayout = std::to_array<LayoutRow<D2cRecord>>({
    field_at<&D2cRecord::md5>(0, "md5"),
    field_at<&D2cRecord::key, &D2cKey::depth_size>(16, "key.depth_size"),
    field_at<&D2cRecord::key, &D2cKey::valid_size>(20, "key.valid_size"),
    field_at<&D2cRecord::key, &D2cKey::hundredfold_unit>(24, "key.hundredfold_unit"),
    field_at<&D2cRecord::key, &D2cKey::mipi_channel>(28, "key.mipi_channel"),
    field_at<&D2cRecord::d2c_params>(32, "d2c_params"),
    field_at<&D2cRecord::d2c, &D2c::depth>(kD2cIntrinsicOffset, "depth"),
    field_at<&D2cRecord::d2c, &D2c::color>(196, "color"),
    field_at<&D2cRecord::d2c, &D2c::zero>(216, "zero"),
    field_at<&D2cRecord::d2c, &D2c::color_distortion>(248, "color_distortion"),
    field_at<&D2cRecord::d2c, &D2c::rotation>(280, "rotation"),
    field_at<&D2cRecord::d2c, &D2c::translation>(316, "translation"),
});
static_assert(complete(kD2cLayout, kCalibD2cSection.record_size));

using Depth = DepthCalcParams_S;

constexpr auto kD2dLayout = std::to_array<LayoutRow<D2dRecord>>({
    field_at<&D2dRecord::md5>(0, "md5"),
    field_at<&D2dRecord::key, &D2dKey::disp_offset>(16, "key.disp_offset"),
    field_at<&D2dRecord::key, &D2dKey::hundredfold_unit>(20, "key.hundredfold_unit"),
    field_at<&D2dRecord::key, &D2dKey::ref_dist>(24, "key.ref_dist"),
    field_at<&D2dRecord::key, &D2dKey::mipi_channel>(28, "key.mipi_channel"),
    field_at<&D2dRecord::depth, &Depth::depth_mode>(32, "depth_mode"),
    field_at<&D2dRecord::depth, &Depth::baseline>(36, "baseline"),
    field_at<&D2dRecord::depth, &Depth::ref_dist>(40, "ref_dist"),
    field_at<&D2dRecord::depth, &Depth::focal_length>(44, "focal_length"),
    field_at<&D2dRecord::depth, &Depth::d2d_params_unit>(48, "d2d_params_unit"),
    field_at<&D2dRecord::depth, &Depth::disp_offset>(52, "disp_offset"),
    field_at<&D2dRecord::depth, &Depth::invalid_disp>(56, "invalid_disp"),
    field_at<&D2dRecord::d2d_params>(60, "d2d_params"),
});
static_assert(complete(kD2dLayout, kCalibD2dSection.record_size));

using Directory = LutDirectoryRecord;

constexpr auto kDirectoryLayout = std::to_array<LayoutRow<Directory>>({
    field_at<&Directory::md5>(0, "md5"),
    field_at<&Directory::key, &RectifyKey::width>(16, "key.width"),
    field_at<&Directory::key, &RectifyKey::height>(18, "key.height"),
    field_at<&Directory::key, &RectifyKey::reserved>(20, "key.reserved"),
    field_at<&Directory::key, &RectifyKey::mipi_channel>(24, "key.mipi_channel"),
    field_at<&Directory::four_sections>(28, "four_sections"),
    field_at<&Directory::hundredfold_start_x>(32, "hundredfold_start_x"),
    field_at<&Directory::hundredfold_start_y>(36, "hundredfold_start_y"),
    field_at<&Directory::camera_1, &RectifyLutInfo::lut_x_start>(40, "camera_1.lut_x_start"),
    field_at<&Directory::camera_1, &RectifyLutInfo::lut_y_start>(44, "camera_1.lut_y_start"),
    field_at<&Directory::camera_1, &RectifyLutInfo::lut_fx>(48, "camera_1.lut_fx"),
    field_at<&Directory::camera_1, &RectifyLutInfo::lut_fy>(52, "camera_1.lut_fy"),
    field_at<&Directory::camera_1, &RectifyLutInfo::lut_cx>(56, "camera_1.lut_cx"),
    field_at<&Directory::camera_1, &RectifyLutInfo::lut_cy>(60, "camera_1.lut_cy"),
    field_at<&Directory::camera_1, &RectifyLutInfo::lut_width>(64, "camera_1.lut_width"),
    field_at<&Directory::camera_1, &RectifyLutInfo::lut_height>(68, "camera_1.lut_height"),
    field_at<&Directory::camera_1, &RectifyLutInfo::sample_rate_bit>(72, "camera_1.sample_rate_bit"),
    field_at<&Directory::camera_0, &RectifyLutInfo::lut_x_start>(76, "camera_0.lut_x_start"),
    field_at<&Directory::camera_0, &RectifyLutInfo::lut_y_start>(80, "camera_0.lut_y_start"),
    field_at<&Directory::camera_0, &RectifyLutInfo::lut_fx>(84, "camera_0.lut_fx"),
    field_at<&Directory::camera_0, &RectifyLutInfo::lut_fy>(88, "camera_0.lut_fy"),
    field_at<&Directory::camera_0, &RectifyLutInfo::lut_cx>(92, "camera_0.lut_cx"),
    field_at<&Directory::camera_0, &RectifyLutInfo::lut_cy>(96, "camera_0.lut_cy"),
    field_at<&Directory::camera_0, &RectifyLutInfo::lut_width>(100, "camera_0.lut_width"),
    field_at<&Directory::camera_0, &RectifyLutInfo::lut_height>(104, "camera_0.lut_height"),
    field_at<&Directory::camera_0, &RectifyLutInfo::sample_rate_bit>(108, "camera_0.sample_rate_bit"),
    field_at<&Directory::camera_1_registers>(112, "camera_1_registers"),
    field_at<&Directory::camera_0_registers>(196, "camera_0_registers"),
});
static_assert(complete(kDirectoryLayout, kLutDirectorySection.record_size));

using Data = LutDataHeader;

constexpr auto kLutDataLayout = std::to_array<LayoutRow<Data>>({
    field_at<&Data::tag>(0, "tag"),
    field_at<&Data::count>(4, "count"),
    field_at<&Data::size>(8, "size"),
    field_at<&Data::md5>(12, "md5"),
    field_at<&Data::key, &LutDataKey::width>(28, "key.width"),
    field_at<&Data::key, &LutDataKey::height>(32, "key.height"),
    field_at<&Data::key, &LutDataKey::hundredfold_start_x>(36, "key.hundredfold_start_x"),
    field_at<&Data::hundredfold_start_y>(40, "hundredfold_start_y"),
    field_at<&Data::zero>(44, "zero"),
    field_at<&Data::section_words>(48, "section_words"),
});
static_assert(complete(kLutDataLayout, kLutDataHeaderSize));

template <std::size_t Index, auto Member>
constexpr LayoutRow<FactoryRecord> camera_field(std::uint32_t offset, const char* name) {
  return field_at<&FactoryRecord::cameras, Index, Member>(offset, name);
}

constexpr auto kFactoryLayout = std::to_array<LayoutRow<FactoryRecord>>({
    field_at<&FactoryRecord::md5>(0, "md5"),
    field_at<&FactoryRecord::label>(16, "label"),
    field_at<&FactoryRecord::mode>(32, "mode"),
    field_at<&FactoryRecord::sizes>(36, "sizes"),
    camera_field<0, &DeCalibRecordCamera_S::width>(60, "left_ir.width"),
    camera_field<0, &DeCalibRecordCamera_S::height>(64, "left_ir.height"),
    camera_field<0, &DeCalibRecordCamera_S::fx>(68, "left_ir.fx"),
    camera_field<0, &DeCalibRecordCamera_S::fy>(72, "left_ir.fy"),
    camera_field<0, &DeCalibRecordCamera_S::cx>(76, "left_ir.cx"),
    camera_field<0, &DeCalibRecordCamera_S::cy>(80, "left_ir.cy"),
    camera_field<0, &DeCalibRecordCamera_S::distortion>(84, "left_ir.distortion"),
    camera_field<0, &DeCalibRecordCamera_S::polynomial_param>(116, "left_ir.polynomial_param"),
    camera_field<0, &DeCalibRecordCamera_S::reserved>(124, "left_ir.reserved"),
    camera_field<1, &DeCalibRecordCamera_S::width>(2076, "right_ir.width"),
    camera_field<1, &DeCalibRecordCamera_S::height>(2080, "right_ir.height"),
    camera_field<1, &DeCalibRecordCamera_S::fx>(2084, "right_ir.fx"),
    camera_field<1, &DeCalibRecordCamera_S::fy>(2088, "right_ir.fy"),
    camera_field<1, &DeCalibRecordCamera_S::cx>(2092, "right_ir.cx"),
    camera_field<1, &DeCalibRecordCamera_S::cy>(2096, "right_ir.cy"),
    camera_field<1, &DeCalibRecordCamera_S::distortion>(2100, "right_ir.distortion"),
    camera_field<1, &DeCalibRecordCamera_S::polynomial_param>(2132, "right_ir.polynomial_param"),
    camera_field<1, &DeCalibRecordCamera_S::reserved>(2140, "right_ir.reserved"),
    camera_field<2, &DeCalibRecordCamera_S::width>(4092, "rgb.width"),
    camera_field<2, &DeCalibRecordCamera_S::height>(4096, "rgb.height"),
    camera_field<2, &DeCalibRecordCamera_S::fx>(4100, "rgb.fx"),
    camera_field<2, &DeCalibRecordCamera_S::fy>(4104, "rgb.fy"),
    camera_field<2, &DeCalibRecordCamera_S::cx>(4108, "rgb.cx"),
    camera_field<2, &DeCalibRecordCamera_S::cy>(4112, "rgb.cy"),
    camera_field<2, &DeCalibRecordCamera_S::distortion>(4116, "rgb.distortion"),
    camera_field<2, &DeCalibRecordCamera_S::polynomial_param>(4148, "rgb.polynomial_param"),
    camera_field<2, &DeCalibRecordCamera_S::reserved>(4156, "rgb.reserved"),
    field_at<&FactoryRecord::zero>(6108, "zero"),
});
static_assert(complete(kFactoryLayout, kFactoryRecordSection.record_size));

}  // namespace

std::span<const LayoutRow<SectionHeader>> section_header_layout() {
  return kHeaderLayout;
}

std::span<const LayoutRow<RectifyRecord>> rectify_record_layout() {
  return kRectifyLayout;
}

std::span<const LayoutRow<D2cRecord>> d2c_record_layout() {
  return kD2cLayout;
}

std::span<const LayoutRow<D2dRecord>> d2d_record_layout() {
  return kD2dLayout;
}

std::span<const LayoutRow<LutDirectoryRecord>> lut_directory_layout() {
  return kDirectoryLayout;
}

std::span<const LayoutRow<LutDataHeader>> lut_data_layout() {
  return kLutDataLayout;
}

std::span<const LayoutRow<FactoryRecord>> factory_record_layout() {
  return kFactoryLayout;
}

void write_section_header(const SectionHeader& header, HeaderForm form, std::span<std::uint8_t> section) {
  for (const LayoutRow<Header>& row : kHeaderLayout) {
    if (form == HeaderForm::kShort && row.offset >= kShortHeaderSize) continue;
    if (form == HeaderForm::kWithoutArrayTag && row.offset == kShortHeaderSize) continue;
    row.write(header, section.subspan(row.offset, row.size).data());
  }
}

SectionHeader read_section_header(std::span<const std::uint8_t> section) {
  SectionHeader header;
  read_record(section_header_layout(), section, header);
  return header;
}

}  // namespace vq3900
