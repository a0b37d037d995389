// The keys of a configuration of any kind, held against what its kind accepts.
#ifndef VQ3900_TOOLS_KEY_CHECKER_H
#define VQ3900_TOOLS_KEY_CHECKER_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "config/ini_document.h"
#include "config_check.h"
#include "config_kinds.h"

namespace vq3900::tool {

// A key in the section where it is looked for.
struct CheckedKey {
  std::string section;
  KeyDescription key;
};

// The texts of one key at a time, and the values that the rules between keys look at.
class KeyChecker {
 public:
  KeyChecker(const IniDocument& document, std::vector<CheckedKey> keys, AcceptedOf accepted)
      : document_(document), keys_(std::move(keys)), accepted_(std::move(accepted)) {}

  void require_section(const std::string& name);
  void check_keys();

  void error(std::uint32_t line, std::string place, std::string message);
  void warn(std::uint32_t line, std::string place, std::string message);
  bool good() const { return !has_errors(findings_); }

  // A value that the single checks have let through; list elements by index. 0 and line 0 for none.
  double value(const std::string& place, std::size_t index = 0) const;
  std::uint32_t line(const std::string& place) const;
  bool has(const std::string& place) const { return values_.contains(place); }

  std::vector<Finding> finish();  // in the order of the lines; the object is used up

 private:
  void check_key(const CheckedKey& checked);
  void check_value(const KeyDescription& key, const IniField& field, const std::string& place);
  void check_unknown();
  void check_repeated();
  std::string expected(const KeyDescription& key) const;

  struct Value {
    std::uint32_t line = 0;
    std::vector<double> numbers;
  };

  const IniDocument& document_;
  std::vector<CheckedKey> keys_;
  AcceptedOf accepted_;
  std::map<std::string, Value> values_;
  std::vector<Finding> findings_;
};

}  // namespace vq3900::tool

#endif
