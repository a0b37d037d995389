#include "library_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

namespace vq3900::tool {

std::string without_trace(const std::string& printed) {
  std::string text;
  for (std::size_t at = 0; at < printed.size();) {
    const std::size_t end = std::min(printed.find('\n', at), printed.size() - 1);
    const std::string line = printed.substr(at, end - at + 1);
    const bool trace = line.starts_with("Md5_gen ") || line.starts_with("MD5Encode ") || line == "start MD5Encode!\n";
    if (!trace) text += line;
    at = end + 1;
  }
  return text;
}

void pass_on(const std::string& printed, const std::string& path, const std::string& name) {
  std::string text = without_trace(printed);
  for (std::size_t at = 0; !path.empty() && (at = text.find(path, at)) != std::string::npos; at += name.size())
    text.replace(at, path.size(), name);
  if (!text.empty() && text.back() != '\n') text += '\n';
  fmt::print(stderr, "{}", text);
}

}  // namespace vq3900::tool
