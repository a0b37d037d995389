#include "cli_values.h"

#include <fmt/format.h>

#include <charconv>

namespace vq3900::tool {

namespace {

std::optional<std::array<float, 2>> read_size(const std::string& text) {
  return read_list<2>(text, 'x', read_finite);
}

bool is_size(const std::string& text) {
  constexpr float kMost = 65535;
  const auto numbers = read_size(text);
  return numbers && std::all_of(numbers->begin(), numbers->end(), [](float number) {
           return number >= 1 && number <= kMost && number == std::floor(number);
         });
}

bool is_temperatures(const std::string& text) {
  return read_list<3>(text, ',', read_finite).has_value();
}

}  // namespace

CLI::ParseError usage_error(const std::string& text) {
  return {text, CLI::ExitCodes::ExtrasError};
}

std::optional<float> read_finite(std::string_view text) {
  const Converted<float> read = to_float(text);
  if (text.empty() || read.length != text.size() || !std::isfinite(read.value)) return std::nullopt;
  return read.value;
}

std::optional<std::uint64_t> read_unsigned(std::string_view text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number, hexadecimal ? 16 : 10);
  if (text.empty() || read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return number;
}

CLI::Validator list_check(bool (*good)(const std::string&), std::string complaint, std::string shape) {
  return {[good, complaint = std::move(complaint)](const std::string& text) { return good(text) ? "" : complaint; },
          std::move(shape)};
}

CLI::Validator file_check() {
  return {[](const std::string& path) {
            const bool missing = path.empty() || path.starts_with('-');
            return missing ? fmt::format("a file is expected, not '{}'", path) : "";
          },
          ""};
}

void add_import_options(CLI::App& command, ImportOptions& options) {
  command
      .add_option_function<std::string>(
          "--size",
          [&options](const std::string& text) {
            const auto numbers = read_size(text);
            options.size =
                ImageSize{static_cast<std::int32_t>(numbers->at(0)), static_cast<std::int32_t>(numbers->at(1))};
          },
          "Image size of both IR cameras, for files without one: WxH")
      ->check(list_check(is_size, "a size such as 640x480 is expected", "WxH"));
  command
      .add_option_function<std::string>(
          "--unit",
          [&options](const std::string& name) {
            options.unit = name == "mm" ? 1 : name == "cm" ? 10 : kMillimetresInMetre;
          },
          "Unit of length, for files that do not fix it (default: m)")
      ->check(CLI::IsMember({"m", "cm", "mm"}));
}

void add_temperatures(CLI::App& command, CalibrationTemperatures& temperatures) {
  command
      .add_option_function<std::string>(
          "--temps",
          [&temperatures](const std::string& text) {
            const auto numbers = read_list<3>(text, ',', read_finite);
            temperatures = {numbers->at(0), numbers->at(1), numbers->at(2)};
          },
          "Temperatures at calibration: LEFT,RIGHT,LASER")
      ->required()
      ->check(list_check(is_temperatures, "three numbers with commas between them are expected", "L,R,LASER"));
}

}  // namespace vq3900::tool
