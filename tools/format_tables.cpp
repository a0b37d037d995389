#include "format_tables.h"

#include <fmt/format.h>

#include <span>
#include <vector>

#include "bytes/layout.h"
#include "commands.h"
#include "config/config_image.h"
#include "flash/calib_image.h"
#include "image_fields.h"
#include "regs/snapshot.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

struct Structure {
  const char* heading;
  std::vector<FieldLayout> rows;
};

std::vector<Structure> structures() {
  return {
      {"Section header of the configuration image", layouts_of(config_header_layout())},
      {"Depth-engine configuration item", layouts_of(dpu_item_layout())},
      {"D2C item", layouts_of(d2c_item_layout())},
      {"IR-pre item", layouts_of(ir_pre_item_layout())},
      {"Register file", layouts_of(register_file_layout())},
      {"Parameter snapshot", layouts_of(snapshot_layout())},
      {"Section header of the calibration files", layouts_of(section_header_layout())},
      {"Rectification record", layouts_of(rectify_record_layout())},
      {"D2C record", layouts_of(d2c_record_layout())},
      {"D2D record", layouts_of(d2d_record_layout())},
      {"LUT directory record", layouts_of(lut_directory_layout())},
      {"Header of a LUT grid", layouts_of(lut_data_layout())},
      {"Factory-align record", layouts_of(factory_record_layout())},
  };
}

const char* element_text(FieldType type) {
  switch (type) {
    case FieldType::kUint8:
      return "u8";
    case FieldType::kInt8:
      return "i8";
    case FieldType::kUint16:
      return "u16";
    case FieldType::kInt16:
      return "i16";
    case FieldType::kUint32:
      return "u32";
    case FieldType::kInt32:
      return "i32";
    case FieldType::kUint64:
      return "u64";
    case FieldType::kInt64:
      return "i64";
    case FieldType::kFloat:
      return "float";
    case FieldType::kDouble:
      return "double";
    case FieldType::kText:
      return "text";
    case FieldType::kRegisters:
      return "register";
    case FieldType::kIntrinsic:
      return "intrinsic";
    case FieldType::kPadding:
      return "padding";
    case FieldType::kFiller:
      return "0xFF";
  }
  return "";
}

std::string type_text(const FieldLayout& row) {
  return row.count == 1 ? element_text(row.type) : fmt::format("{} x {}", row.count, element_text(row.type));
}

std::string table_text(const Structure& structure) {
  std::string text = fmt::format("### {}\n\n| offset | size | type | field |\n|---|---|---|---|\n", structure.heading);
  for (const FieldLayout& row : structure.rows) {
    const bool named = row.type != FieldType::kPadding && row.type != FieldType::kFiller;
    text += fmt::format(
        "| {} | {} | {} | {} |\n", row.offset, row.size, type_text(row), named ? fmt::format("`{}`", row.name) : "");
  }
  const FieldLayout& last = structure.rows.back();
  return text + fmt::format("\n{} bytes.\n", last.offset + last.size);
}

}  // namespace

std::string format_tables() {
  std::string text;
  for (const Structure& structure : structures())
    text += (text.empty() ? "" : "\n") + table_text(structure);
  return text;
}

int formats_command() {
  fmt::print("{}", format_tables());
  return kDone;
}

}  // namespace vq3900::tool
