#include "progress_bar.h"

#include <fmt/format.h>

#include <algorithm>

namespace vq3900::tool {

std::string progress_line(std::size_t done, std::size_t total, std::string_view doing) {
  constexpr std::size_t kWidth = 20;
  constexpr std::size_t kLine = 79;
  done = std::min(done, total);
  const std::size_t filled = total == 0 ? kWidth : kWidth * done / total;
  std::string line =
      fmt::format("[{}{}] {}/{}  ", std::string(filled, '#'), std::string(kWidth - filled, ' '), done, total);
  for (const char character : doing.substr(0, doing.find('\n')))
    line += character >= ' ' && character <= '~' ? character : '?';
  return line.substr(0, kLine);
}

}  // namespace vq3900::tool
