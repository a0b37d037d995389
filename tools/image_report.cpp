#include "image_report.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <map>

#include "register_blocks.h"
#include "register_report.h"

namespace vq3900::tool {

namespace {

// A stamp is the packed first characters of a version, or a time: whoever reads it sees both.
std::string stamp_text(const ImageField& field) {
  const auto stamp = field.json.get<std::uint32_t>();
  std::string version;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto character = static_cast<char>((stamp >> shift) & 0xFF);
    if (character >= ' ' && character <= '~') version += std::string(version.empty() ? "" : ".") + character;
  }
  const std::string time = fmt::format("{:%Y-%m-%d %H:%M:%S} UTC", fmt::gmtime(static_cast<std::time_t>(stamp)));
  return fmt::format("0x{:08X} (version {}, or {})", stamp, version, time);
}

std::string header_text(const ImageField& field) {
  if (field.name == "version_or_time" || field.name == "time") return stamp_text(field);
  if (field.json.is_number_unsigned()) return fmt::format("{} (0x{:X})", field.text, field.json.get<std::uint64_t>());
  return field.text;
}

std::string indented(const std::string& text, int by) {
  std::string result;
  const std::string margin(static_cast<std::size_t>(by), ' ');
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size() - 1);
    result += margin + text.substr(at, end - at + 1);
    at = end + 1;
  }
  return result;
}

// The registers with the library's fields when the block is one of its tables.
std::string registers_text(const ImageRegisters& registers) {
  const RegisterBlock* const known = find_block(registers.block);
  const RegisterBlock unknown{registers.block, registers.block, nullptr, {}};
  return register_table(known != nullptr ? *known : unknown, registers.elements);
}

std::string item_text(const ImageItem& item) {
  std::string text = item.name.empty() ? "" : fmt::format("  item {}\n", item.name);
  for (const ImageField& field : item.fields)
    text += fmt::format("    {:<28} {}\n", field.name, field.text);
  for (const ImageRegisters& registers : item.registers)
    text += indented(registers_text(registers), 4);
  return text;
}

std::string section_text(const ImageSection& section) {
  std::string text = fmt::format("\nSection {} at {}: ", section.name, section.offset);
  if (section.header.empty() && section.items.empty()) return text + "empty\n";
  text += fmt::format("{} item{}\n", section.items.size(), section.items.size() == 1 ? "" : "s");
  for (const ImageField& field : section.header)
    text += fmt::format("  {:<20} {}\n", field.name, header_text(field));
  for (const ImageItem& item : section.items)
    text += item_text(item);
  for (const ImageCheck& check : section.checks) {
    text += fmt::format("  {:<4} {}: {}\n", check.good ? "ok" : "BAD", check.what, check.detail);
  }
  return text;
}

nlohmann::ordered_json fields_json(const std::vector<ImageField>& fields) {
  nlohmann::ordered_json object = nlohmann::ordered_json::object();
  for (const ImageField& field : fields)
    object[field.name] = field.json;
  return object;
}

nlohmann::ordered_json registers_json(const ImageRegisters& registers) {
  const RegisterBlock* const known = find_block(registers.block);
  const RegisterBlock unknown{registers.block, registers.block, nullptr, {}};
  return register_json(known != nullptr ? *known : unknown, registers.elements);
}

// What stands at a place: for people, and as bytes, which decide whether two images differ there.
struct Content {
  std::string text;
  std::string bytes;
};

// Everything that an image says, by place.
using Places = std::map<std::string, Content>;

Content word_content(std::uint32_t word) {
  const std::string text = fmt::format("0x{:08X}", word);
  return {text, text};
}

void add_registers(const std::string& place, const ImageRegisters& registers, Places& places) {
  const RegisterBlock* const block = find_block(registers.block);
  for (std::size_t i = 0; i < registers.elements.size(); ++i) {
    const DeRegElement_S& element = registers.elements[i];
    const std::string name = fmt::format("{}{}[{}]", place, registers.block, i);
    places[name + ".address"] = word_content(element.address);
    places[name + ".mask"] = word_content(element.mask);
    places[name + ".value"] = word_content(element.value);
    if (block == nullptr) continue;
    for (const FieldBits& field : fields_of(*block, i)) {
      if (!field.written()) continue;
      const std::string text = fmt::format("{:.9g}", decode_bits(field, element.value));
      places[name + "." + field.name] = {text, text};
    }
  }
}

Places places_of(const Image& image) {
  const std::string size = fmt::format("{}", image.size);
  Places places{{"kind", {image.kind, image.kind}}, {"size", {size, size}}};
  for (const ImageSection& section : image.sections) {
    for (const ImageField& field : section.header)
      places[section.name + ".header." + field.name] = {field.text, field.bytes};
    for (const ImageItem& item : section.items) {
      const std::string place = item.name.empty() ? "" : fmt::format("{}[{}].", section.name, item.name);
      for (const ImageField& field : item.fields)
        places[place + field.name] = {field.text, field.bytes};
      for (const ImageRegisters& registers : item.registers)
        add_registers(place, registers, places);
    }
  }
  return places;
}

}  // namespace

std::string image_text(const std::string& path, const Image& image) {
  std::string text = fmt::format("{}: {}, {} bytes\n", path, image.kind, image.size);
  for (const ImageSection& section : image.sections)
    text += section_text(section);
  std::size_t checks = 0;
  std::size_t bad = 0;
  for (const ImageSection& section : image.sections) {
    checks += section.checks.size();
    bad += static_cast<std::size_t>(std::count_if(
        section.checks.begin(), section.checks.end(), [](const ImageCheck& check) { return !check.good; }));
  }
  return text + fmt::format("\n{} checks, {} bad\n", checks, bad);
}

nlohmann::ordered_json image_json(const std::string& path, const Image& image) {
  nlohmann::ordered_json sections = nlohmann::ordered_json::array();
  for (const ImageSection& section : image.sections) {
    nlohmann::ordered_json items = nlohmann::ordered_json::array();
    for (const ImageItem& item : section.items) {
      nlohmann::ordered_json registers = nlohmann::ordered_json::array();
      for (const ImageRegisters& table : item.registers)
        registers.push_back(registers_json(table));
      items.push_back({{"name", item.name}, {"fields", fields_json(item.fields)}, {"registers", std::move(registers)}});
    }
    nlohmann::ordered_json checks = nlohmann::ordered_json::array();
    for (const ImageCheck& check : section.checks) {
      checks.push_back({{"what", check.what}, {"good", check.good}, {"detail", check.detail}});
    }
    sections.push_back({{"name", section.name},
                        {"offset", section.offset},
                        {"header", fields_json(section.header)},
                        {"items", std::move(items)},
                        {"checks", std::move(checks)}});
  }
  return {{"file", path},
          {"kind", image.kind},
          {"size", image.size},
          {"good", image.good()},
          {"sections", std::move(sections)}};
}

std::vector<ImageDifference> compare_images(const Image& first, const Image& second) {
  const Places a = places_of(first);
  const Places b = places_of(second);
  std::vector<ImageDifference> differences;
  const auto content_at = [](const Places& places, const std::string& place) {
    const auto at = places.find(place);
    return at == places.end() ? Content{} : at->second;
  };
  Places all = a;
  all.insert(b.begin(), b.end());
  for (const auto& [place, unused] : all) {
    const Content in_first = content_at(a, place);
    const Content in_second = content_at(b, place);
    if (in_first.bytes != in_second.bytes) differences.push_back({place, in_first.text, in_second.text});
  }
  return differences;
}

}  // namespace vq3900::tool
