// The calibration flash image: where its sections lie, what their headers and records hold, byte by byte.
#ifndef VQ3900_FLASH_CALIB_IMAGE_H
#define VQ3900_FLASH_CALIB_IMAGE_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "bytes/layout.h"
#include "bytes/md5.h"
#include "state/register_tables.h"

namespace vq3900 {

// --- sections

inline constexpr std::size_t kCalibImageSize = 20480;
inline constexpr std::size_t kCalibImageWithAlignmentSize = 24576;
inline constexpr std::size_t kFactoryFileSize = 16384;
inline constexpr std::uint32_t kLutDirectoryRoom = 4096;  // of the LUT file, before the LUT data
inline constexpr std::uint32_t kLutDataRoom = 692224;     // up to the section behind it in the device's flash

// The CRC-32 covers the section's first `length` bytes, its own word taken as 0.
struct SectionHeader {
  std::uint32_t tag = 0;
  std::uint32_t crc = 0;
  std::uint32_t length = 0;
  std::uint32_t address = 0;  // in the device's flash
  std::uint32_t format = 18;
  std::uint32_t time = 0;  // seconds since 1970-01-01 UTC, low 32 bits
  std::array<std::uint64_t, 3> serial_number{};
  std::uint32_t array_tag = 0;
  std::uint32_t count = 0;
  std::uint32_t record_size = 0;
};

// What a section has of the record array's fields.
enum class HeaderForm : std::uint8_t {
  kFull,
  kWithoutArrayTag,
  kShort,
};

inline constexpr std::uint32_t kSectionHeaderSize = 60;
inline constexpr std::uint32_t kShortHeaderSize = 48;  // without the record array's fields

std::span<const LayoutRow<SectionHeader>> section_header_layout();

// Writes what the form has of a header; the bytes of what it does not have stay.
void write_section_header(const SectionHeader& header, HeaderForm form, std::span<std::uint8_t> section);

// A header from the start of a section of at least 60 bytes.
SectionHeader read_section_header(std::span<const std::uint8_t> section);

struct CalibSection {
  const char* name;
  std::uint32_t tag;
  std::uint32_t array_tag;
  std::uint32_t address;      // in the device's flash
  std::uint32_t record_size;  // 0: found while building
  std::uint32_t offset;       // in its file
  std::uint32_t room;
  HeaderForm form = HeaderForm::kFull;

  constexpr std::uint32_t most_records() const { return (room - kSectionHeaderSize) / record_size; }
};

// A code byte and three letters.
constexpr std::uint32_t section_tag(std::uint8_t code) {
  return 0x46447300U | code;  // "sDF"
}
constexpr std::uint32_t array_tag(std::uint8_t code) {
  return 0x46446100U | code;  // "aDF"
}

inline constexpr CalibSection kRectifySection{"rectify", section_tag(0x08), array_tag(0x05), 0xB0000, 964, 0, 8192};
inline constexpr CalibSection kCalibD2cSection{"d2c", section_tag(0x09), array_tag(0x06), 0xB2000, 328, 8192, 8192};
inline constexpr CalibSection kCalibD2dSection{"d2d", section_tag(0x0A), array_tag(0x07), 0xB4000, 84, 16384, 4096};
inline constexpr CalibSection kAlignmentSection{
    "alignment", section_tag(0x0B), array_tag(0x08), 0xB5000, 976, 20480, 4096};
inline constexpr CalibSection kLutDirectorySection{
    "lut directory", section_tag(0x0D), array_tag(0x0A), 0x160000, 280, 0, kLutDirectoryRoom};
inline constexpr CalibSection kLutDataSection{
    "lut data", section_tag(0x10), 0, 0x161000, 0, kLutDirectoryRoom, kLutDataRoom, HeaderForm::kShort};
inline constexpr CalibSection kFactoryFileSection{
    "factory align", section_tag(0x12), 0, 0x20A000, 0, 0, kFactoryFileSize, HeaderForm::kWithoutArrayTag};
inline constexpr CalibSection kFactoryRecordSection{
    "factory align", section_tag(0x16), array_tag(0x13), 0x218000, 6288, 0, 0xFFFFFFFF};

inline constexpr std::array kCalibImageSections{kRectifySection, kCalibD2cSection, kCalibD2dSection, kAlignmentSection};

// --- records

// The values that make two rectifications the same.
struct RectifyKey {
  std::uint16_t width = 0;  // camera 1's, rectified
  std::uint16_t height = 0;
  std::uint16_t reserved[2] = {};
  std::uint32_t mipi_channel = 0;
};

struct RectifyRecord {
  Md5Digest md5{};
  RectifyKey key{};
  RegisterTable<29> rectify_params{};  // camera 0's 23 elements, the rest zero
  RegisterTable<29> sbg2r_params{};    // camera 1's
  DeStereoRectifyParams_S rect{};      // but for its reserved words, which are in the key
};

struct D2cKey {
  std::uint16_t depth_size[2] = {};
  std::uint16_t valid_size[2] = {};
  std::int32_t hundredfold_unit = 0;
  std::uint32_t mipi_channel = 0;
};

struct D2cRecord {
  Md5Digest md5{};
  D2cKey key{};
  RegisterTable<12> d2c_params{};
  DeCameraD2CParams_S d2c{};  // but for the valid area's intrinsics
};

struct D2dKey {
  std::int32_t disp_offset = 0;  // to the nearest 10
  std::int32_t hundredfold_unit = 0;
  std::int32_t ref_dist = 0;  // to the nearest 100; 0 for cameras with a mode of their own
  std::uint32_t mipi_channel = 0;
};

struct D2dRecord {
  Md5Digest md5{};
  D2dKey key{};
  DepthCalcParams_S depth{};
  RegisterTable<2> d2d_params{};
};

// One configuration's undistortion LUT. It names its data by camera 1's width and height and the start column.
struct LutDirectoryRecord {
  Md5Digest md5{};  // of the rectify key
  RectifyKey key{};
  std::uint32_t four_sections = 0;       // 1: four sections; 0: two, or none
  std::int32_t hundredfold_start_x = 0;  // in samples, without its sign
  std::int32_t hundredfold_start_y = 0;
  RectifyLutInfo camera_1{};
  RectifyLutInfo camera_0{};
  RegisterTable<7> camera_1_registers{};
  RegisterTable<7> camera_0_registers{};
};

// The values that make two grids the same.
struct LutDataKey {
  std::uint32_t width = 0;  // camera 1's
  std::uint32_t height = 0;
  std::int32_t hundredfold_start_x = 0;
};

// What stands before the words of a stored grid.
struct LutDataHeader {
  std::uint32_t tag = array_tag(0x0D);
  std::uint32_t count = 1;
  std::uint32_t size = 0;  // from the digest on
  Md5Digest md5{};
  LutDataKey key{};
  std::int32_t hundredfold_start_y = 0;
  std::uint32_t zero = 0;
  std::uint32_t section_words = 0;
};

inline constexpr std::uint32_t kLutDataHeaderSize = 52;
inline constexpr std::uint32_t kLutDataUncounted = 12;  // bytes of the header that `size` leaves out
inline constexpr std::size_t kMostLutData = 6;          // grids in one image

// The cameras of one configuration as the factory aligned them.
struct FactoryRecord {
  Md5Digest md5{};
  char label[16] = {};
  std::uint32_t mode = 0;
  std::array<std::int32_t, 6> sizes{};  // width and height of left IR, right IR, colour
  std::array<DeCalibRecordCamera_S, 3> cameras{};
  std::array<std::uint8_t, 180> zero{};
};

std::span<const LayoutRow<RectifyRecord>> rectify_record_layout();
std::span<const LayoutRow<D2cRecord>> d2c_record_layout();
std::span<const LayoutRow<D2dRecord>> d2d_record_layout();
std::span<const LayoutRow<LutDirectoryRecord>> lut_directory_layout();
std::span<const LayoutRow<LutDataHeader>> lut_data_layout();
std::span<const LayoutRow<FactoryRecord>> factory_record_layout();

// The bytes of a record's key, which its digest covers.
inline constexpr std::uint32_t kKeyOffset = 16;
inline constexpr std::uint32_t kRectifyKeySize = 12;
inline constexpr std::uint32_t kD2cKeySize = 16;
inline constexpr std::uint32_t kD2dKeySize = 16;
inline constexpr std::uint32_t kD2cIntrinsicOffset = 176;  // of the depth camera
inline constexpr std::uint32_t kLutDataKeyOffset = 28;
inline constexpr std::uint32_t kLutDataKeySize = 12;
inline constexpr std::uint32_t kFactoryKeySize = 20;  // label and mode

}  // namespace vq3900

#endif
