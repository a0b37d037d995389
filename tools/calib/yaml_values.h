// YAML nodes with their place in the file.
#ifndef VQ3900_TOOLS_CALIB_YAML_VALUES_H
#define VQ3900_TOOLS_CALIB_YAML_VALUES_H

#include <yaml-cpp/yaml.h>

#include <string>
#include <vector>

#include "calib/calib_values.h"

namespace vq3900::tool {

// A value with the names of the maps that it stands in.
struct YamlValue {
  YAML::Node node;
  Place place;

  // The value under a key; missing, or looked for in something that is no map: an error.
  YamlValue at(const std::string& key) const;
  bool has(const std::string& key) const;

  std::string text() const;
  double number() const;
  std::vector<double> numbers() const;                   // a list of numbers
  std::vector<std::vector<double>> number_rows() const;  // a list of such lists
};

// The document of a file, which must be a map.
YamlValue parse_yaml(const CalibrationText& file);

}  // namespace vq3900::tool

#endif
