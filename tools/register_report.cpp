#include "register_report.h"

#include <fmt/format.h>

#include <cstddef>
#include <vector>

namespace vq3900::tool {

namespace {

// A field as "name value"; one that only one direction knows says so.
std::string field_text(const FieldBits& field, std::uint32_t register_value) {
  const double value = decode_bits(field, register_value);
  const bool integer = field.coding == Coding::kInteger;
  const std::string number = integer ? fmt::format("{:.0f}", value) : fmt::format("{:.9g}", value);
  const char* const remark = !field.written() ? " (read back)" : "";
  return fmt::format("{} {}{}", field.name, number, remark);
}

std::string fields_text(const RegisterBlock& block, std::size_t element, std::uint32_t value) {
  std::vector<std::string> texts;
  for (const FieldBits& field : fields_of(block, element))
    texts.push_back(field_text(field, value));
  return fmt::format("{}", fmt::join(texts, ", "));
}

// How many registers from this one on have consecutive addresses, the same mask and value, and no fields.
std::size_t plain_run(const RegisterBlock& block, std::span<const DeRegElement_S> registers, std::size_t first) {
  std::size_t next = first;
  while (next < registers.size() && fields_of(block, next).empty() &&
         registers[next].address == registers[first].address + 4 * (next - first) &&
         registers[next].mask == registers[first].mask && registers[next].value == registers[first].value) {
    ++next;
  }
  return next - first;
}

}  // namespace

std::string register_table(const RegisterBlock& block, std::span<const DeRegElement_S> registers) {
  std::string text = fmt::format("{} ({}, {} registers)\n", block.title, block.name, registers.size());
  constexpr std::size_t kShortestRun = 4;
  for (std::size_t i = 0; i < registers.size(); ++i) {
    const DeRegElement_S& element = registers[i];
    const std::size_t run = plain_run(block, registers, i);
    if (run >= kShortestRun) {
      text += fmt::format("  0x{:08X}  mask {:08X}  value {:08X}  and the same up to 0x{:08X}\n",
                          element.address,
                          element.mask,
                          element.value,
                          registers[i + run - 1].address);
      i += run - 1;
      continue;
    }
    const std::string fields = fields_text(block, i, element.value);
    text += fmt::format("  0x{:08X}  mask {:08X}  value {:08X}{}{}\n",
                        element.address,
                        element.mask,
                        element.value,
                        fields.empty() ? "" : "  ",
                        fields);
  }
  return text;
}

nlohmann::ordered_json register_json(const RegisterBlock& block, std::span<const DeRegElement_S> registers) {
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < registers.size(); ++i) {
    nlohmann::ordered_json row{
        {"address", registers[i].address}, {"mask", registers[i].mask}, {"value", registers[i].value}};
    nlohmann::ordered_json fields = nlohmann::ordered_json::array();
    for (const FieldBits& field : fields_of(block, i)) {
      fields.push_back({{"name", field.name},
                        {"mask", field.mask},
                        {"value", decode_bits(field, registers[i].value)},
                        {"written", field.written()},
                        {"read_back", field.read_back()}});
    }
    if (!fields.empty()) row["fields"] = std::move(fields);
    rows.push_back(std::move(row));
  }
  return {{"name", block.name}, {"title", block.title}, {"registers", std::move(rows)}};
}

}  // namespace vq3900::tool
