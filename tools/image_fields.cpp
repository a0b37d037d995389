#include "image_fields.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <string_view>
#include <type_traits>
#include <utility>

#include "bytes/md5.h"

namespace vq3900::tool {

namespace {

using Json = nlohmann::ordered_json;

// A field of more bytes than this is summarised.
constexpr std::uint32_t kLongestList = 16;

// A value for people and for programs.
struct Shown {
  std::string text;
  Json json;
};

// JSON has no infinities and no NaN: they are texts. The bits of a NaN stay visible.
template <typename Number>
Shown shown_number(Number number) {
  if constexpr (std::is_floating_point_v<Number>) {
    using Bits = std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>;
    std::string text = std::isnan(number)
                           ? fmt::format("nan (0x{:0{}X})", std::bit_cast<Bits>(number), 2 * sizeof(Number))
                           : fmt::format("{:.9g}", number);
    return std::isfinite(number) ? Shown{std::move(text), number} : Shown{text, text};
  } else {
    return {fmt::format("{}", +number), number};
  }
}

template <typename Number>
Shown shown_at(const std::uint8_t* from) {
  return shown_number(load_little<Number>(from));
}

Shown shown_intrinsic(const std::uint8_t* from) {
  DeCameraIntrinsic_S intrinsic{};
  vq3900::detail::read_element(intrinsic, from);
  const Shown fx = shown_number(intrinsic.fx);
  const Shown fy = shown_number(intrinsic.fy);
  const Shown cx = shown_number(intrinsic.cx);
  const Shown cy = shown_number(intrinsic.cy);
  return {
      fmt::format(
          "{}x{}, fx {}, fy {}, cx {}, cy {}", intrinsic.width, intrinsic.height, fx.text, fy.text, cx.text, cy.text),
      Json{{"fx", fx.json},
           {"fy", fy.json},
           {"cx", cx.json},
           {"cy", cy.json},
           {"width", intrinsic.width},
           {"height", intrinsic.height}}};
}

// One element of a field. Texts and registers are no elements of numbers: read_field() and read_item() take them whole.
Shown shown_element(FieldType type, const std::uint8_t* from) {
  switch (type) {
    case FieldType::kUint8:
      return shown_at<std::uint8_t>(from);
    case FieldType::kInt8:
      return shown_at<std::int8_t>(from);
    case FieldType::kUint16:
      return shown_at<std::uint16_t>(from);
    case FieldType::kInt16:
      return shown_at<std::int16_t>(from);
    case FieldType::kUint32:
      return shown_at<std::uint32_t>(from);
    case FieldType::kInt32:
      return shown_at<std::int32_t>(from);
    case FieldType::kUint64:
      return shown_at<std::uint64_t>(from);
    case FieldType::kInt64:
      return shown_at<std::int64_t>(from);
    case FieldType::kFloat:
      return shown_at<float>(from);
    case FieldType::kDouble:
      return shown_at<double>(from);
    case FieldType::kIntrinsic:
      return shown_intrinsic(from);
    case FieldType::kText:
    case FieldType::kRegisters:
    case FieldType::kPadding:
    case FieldType::kFiller:
      break;
  }
  return {};
}

// Printable characters up to the first zero; others as \xNN, and a backslash doubled.
std::string text_of(Bytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (byte == 0) break;
    if (byte == '\\') {
      text += "\\\\";
    } else if (byte >= 0x20 && byte < 0x7F) {
      text += static_cast<char>(byte);
    } else {
      text += fmt::format("\\x{:02X}", byte);
    }
  }
  return text;
}

bool is_digest(const FieldLayout& layout) {
  return layout.type == FieldType::kUint8 && layout.count == 16 && layout.name == std::string_view("md5");
}

ImageField read_field(const FieldLayout& layout, Bytes file, std::size_t offset) {
  const Bytes bytes = file.subspan(offset, layout.size);
  if (layout.type == FieldType::kText) return summary_field(layout.name, file, offset, layout.size, text_of(bytes));
  if (is_digest(layout)) return summary_field(layout.name, file, offset, layout.size, hex_text(bytes));
  if (layout.type == FieldType::kUint8 && layout.count > kLongestList) {
    return summary_field(layout.name, file, offset, layout.size, bytes_summary(bytes));
  }
  ImageField field{layout.name, offset, "", Json::array(), {bytes.begin(), bytes.end()}};
  const std::size_t width = layout.size / layout.count;
  for (std::size_t i = 0; i < layout.count; ++i) {
    Shown shown = shown_element(layout.type, bytes.data() + i * width);
    field.text += (i == 0 ? "" : ", ") + shown.text;
    field.json.push_back(std::move(shown.json));
  }
  if (layout.count == 1) field.json = Json(field.json.front());
  return field;
}

std::vector<DeRegElement_S> read_registers(Bytes bytes) {
  std::vector<DeRegElement_S> elements;
  for (std::size_t at = 0; at + sizeof(DeRegElement_S) <= bytes.size(); at += sizeof(DeRegElement_S)) {
    elements.push_back({word_at(bytes, at), word_at(bytes, at + 4), word_at(bytes, at + 8)});
  }
  return elements;
}

}  // namespace

ImageItem read_item(std::string name, std::span<const FieldLayout> layout, Bytes file, std::size_t offset) {
  ImageItem item{std::move(name), {}, {}};
  for (const FieldLayout& field : layout) {
    const std::size_t at = offset + field.offset;
    if (field.type == FieldType::kPadding || field.type == FieldType::kFiller) continue;
    if (field.type == FieldType::kRegisters) {
      item.registers.push_back({field.name, at, read_registers(file.subspan(at, field.size))});
    } else {
      item.fields.push_back(read_field(field, file, at));
    }
  }
  return item;
}

ImageField summary_field(std::string name, Bytes file, std::size_t offset, std::size_t size, const std::string& text) {
  const Bytes bytes = file.subspan(offset, size);
  return {std::move(name), offset, text, text, {bytes.begin(), bytes.end()}};
}

std::string bytes_summary(Bytes bytes) {
  const bool equal = std::all_of(bytes.begin(), bytes.end(), [&](std::uint8_t byte) { return byte == bytes.front(); });
  if (equal && !bytes.empty()) return fmt::format("{} bytes, all 0x{:02X}", bytes.size(), bytes.front());
  return fmt::format("{} bytes, MD5 {}", bytes.size(), hex_text(md5(bytes)));
}

std::string hex_text(Bytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes)
    text += fmt::format("{:02x}", byte);
  return text;
}

std::uint32_t word_at(Bytes bytes, std::size_t offset) {
  return load_little<std::uint32_t>(&bytes[offset]);
}

}  // namespace vq3900::tool
