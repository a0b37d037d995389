// What holds between the loaders of configurations and the tool's check of them.
#ifndef VQ3900_TESTS_FUZZ_FUZZ_CONFIG_H
#define VQ3900_TESTS_FUZZ_FUZZ_CONFIG_H

#include <string>

#include "config_check.h"
#include "fuzz_support.h"

namespace vq3900::fuzz {

// The check finds no error in what loads and is applied, and explains what does not load.
inline void require_explained(const std::string& text, tool::ConfigKind kind, bool loaded, bool applied) {
  const auto findings = tool::check_config(text, kind);
  for (const tool::Finding& finding : findings)
    static_cast<void>(tool::finding_line("file", finding));
  if (!tool::has_errors(findings)) require(loaded && applied);
}

}  // namespace vq3900::fuzz

#endif
