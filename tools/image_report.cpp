#include "image_report.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <span>

#include "register_blocks.h"
#include "register_report.h"

namespace vq3900::tool {

namespace {

std::string time_text(std::uint32_t time) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S} UTC", fmt::gmtime(static_cast<std::time_t>(time)));
}

// A stamp is the packed first characters of a version, or a time: whoever reads it sees both, as far as there is a
// version in it.
std::string stamp_text(std::uint32_t stamp) {
  std::string version;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto character = static_cast<char>((stamp >> shift) & 0xFF);
    if (character >= ' ' && character <= '~') version += std::string(version.empty() ? "" : ".") + character;
  }
  return version.empty() ? time_text(stamp) : fmt::format("version {}, or {}", version, time_text(stamp));
}

std::string header_text(const ImageField& field) {
  if (!field.json.is_number_unsigned()) return field.text;
  const auto number = field.json.get<std::uint64_t>();
  const auto word = static_cast<std::uint32_t>(number);
  if (field.name == "version_or_time") return fmt::format("0x{:08X} ({})", number, stamp_text(word));
  if (field.name == "time") return fmt::format("0x{:08X} ({})", number, time_text(word));
  return fmt::format("{} (0x{:X})", field.text, number);
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

// Without the zero elements behind a table that is shorter than its room.
std::span<const DeRegElement_S> used_elements(const ImageRegisters& registers) {
  std::size_t count = registers.elements.size();
  for (; count > 0; --count) {
    const DeRegElement_S& last = registers.elements[count - 1];
    if (last.address != 0 || last.mask != 0 || last.value != 0) break;
  }
  return std::span{registers.elements}.first(count);
}

// The registers with the library's fields when the block is one of its tables.
std::string registers_text(const ImageRegisters& registers) {
  const RegisterBlock* const known = block_of(registers);
  const RegisterBlock unknown{registers.block, registers.block, nullptr, {}};
  return register_table(known != nullptr ? *known : unknown, used_elements(registers));
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
  const RegisterBlock* const known = block_of(registers);
  const RegisterBlock unknown{registers.block, registers.block, nullptr, {}};
  return register_json(known != nullptr ? *known : unknown, registers.elements);
}

}  // namespace

std::string image_text(const std::string& path, const Image& image) {
  std::string text = fmt::format("{}: {}, {} bytes\n", path, image.kind, image.bytes.size());
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
          {"size", image.bytes.size()},
          {"good", image.good()},
          {"sections", std::move(sections)}};
}

}  // namespace vq3900::tool
