// How far a job is: one line that is written over and over, on terminals alone.
#ifndef VQ3900_TOOLS_PROGRESS_BAR_H
#define VQ3900_TOOLS_PROGRESS_BAR_H

#include <cstddef>
#include <string>
#include <string_view>

namespace vq3900::tool {

// "[#########           ] 3/8  what is being done", cut to a line of a terminal.
std::string progress_line(std::size_t done, std::size_t total, std::string_view doing);

// What brings the next line to the place of this one.
inline constexpr std::string_view kStartOver = "\r\x1B[K";

}  // namespace vq3900::tool

#endif
