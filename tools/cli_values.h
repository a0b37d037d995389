// Values on the command line that the parser does not know by itself.
#ifndef VQ3900_TOOLS_CLI_VALUES_H
#define VQ3900_TOOLS_CLI_VALUES_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "calib/calib_import.h"
#include "calib/calib_run.h"
#include "config/c_locale.h"

namespace vq3900::tool {

// A complaint about the command line: one line, exit code 2.
CLI::ParseError usage_error(const std::string& text);

// As many values as that, one separator between each two; nothing for any other text. `read` answers nothing for a text
// that is none of its values.
template <std::size_t Count, typename Read>
auto read_list(std::string_view text, char separator, const Read& read)
    -> std::optional<std::array<typename decltype(read(text))::value_type, Count>> {
  std::array<typename decltype(read(text))::value_type, Count> values{};
  for (auto& value : values) {
    const bool last = &value == &values.back();
    const std::size_t end = last ? text.size() : text.find(separator);
    if (end == std::string_view::npos) return std::nullopt;
    const auto one = read(text.substr(0, end));
    if (!one) return std::nullopt;
    value = *one;
    text.remove_prefix(last ? end : end + 1);
  }
  return values;
}

std::optional<float> read_finite(std::string_view text);            // all of it one finite number
std::optional<std::uint64_t> read_unsigned(std::string_view text);  // decimal, or hexadecimal behind 0x

// A check that refuses texts without those values, with these words.
CLI::Validator list_check(bool (*good)(const std::string&), std::string complaint, std::string shape);

// For options that are given once for each file: what starts with a dash or is empty stands in the place of a file.
CLI::Validator file_check();

// --size and --unit of calibration files that leave them open, and the temperatures at calibration.
void add_import_options(CLI::App& command, ImportOptions& options);
void add_temperatures(CLI::App& command, CalibrationTemperatures& temperatures);

}  // namespace vq3900::tool

#endif
