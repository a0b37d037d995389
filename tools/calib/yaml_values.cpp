#include "calib/yaml_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace vq3900::tool {

namespace {

constexpr std::size_t kMostNumbers = 64;  // more than any list of a calibration has

std::size_t line_of(const YAML::Mark& mark) {
  return mark.is_null() || mark.line < 0 ? 0 : static_cast<std::size_t>(mark.line) + 1;
}

YamlValue element(const YamlValue& list, std::size_t index) {
  YamlValue value{list.node[index], list.place};
  if (const std::size_t line = line_of(value.node.Mark()); line > 0) value.place.line = line;
  return value;
}

void require_list(const YamlValue& value) {
  if (!value.node.IsSequence()) value.place.fail("no list");
  if (value.node.size() > kMostNumbers) value.place.fail(fmt::format("a list of {}, too long", value.node.size()));
}

// A first line such as "%YAML:1.0" is no directive of YAML: emptied, so that the lines keep their numbers.
std::string without_header(const std::string& text) {
  if (!text.starts_with('%')) return text;
  return text.substr(std::min(text.find('\n'), text.size()));
}

}  // namespace

bool YamlValue::has(const std::string& key) const {
  return node.IsMap() && node[key].IsDefined();
}

YamlValue YamlValue::at(const std::string& key) const {
  Place inner = place;
  inner.key = place.key.empty() ? key : place.key + "." + key;
  if (!node.IsMap()) place.fail("no map of keys and values");
  const YAML::Node found = node[key];
  if (!found.IsDefined()) inner.fail("missing");
  if (const std::size_t line = line_of(found.Mark()); line > 0) inner.line = line;
  return {found, inner};
}

std::string YamlValue::text() const {
  if (!node.IsScalar()) place.fail("no single value");
  return node.Scalar();
}

double YamlValue::number() const {
  return number_at(place, text());
}

std::vector<double> YamlValue::numbers() const {
  require_list(*this);
  std::vector<double> numbers;
  for (std::size_t i = 0; i < node.size(); ++i)
    numbers.push_back(element(*this, i).number());
  return numbers;
}

std::vector<std::vector<double>> YamlValue::number_rows() const {
  require_list(*this);
  std::vector<std::vector<double>> rows;
  for (std::size_t i = 0; i < node.size(); ++i)
    rows.push_back(element(*this, i).numbers());
  return rows;
}

YamlValue parse_yaml(const CalibrationText& file) {
  const Place start{file.path, 0, ""};
  try {
    YamlValue document{YAML::Load(without_header(file.text)), start};
    if (!document.node.IsMap()) start.fail("no map of keys and values");
    return document;
  } catch (const YAML::Exception& fault) {
    Place{file.path, line_of(fault.mark), ""}.fail("no YAML: " + fault.msg);
  }
}

}  // namespace vq3900::tool
