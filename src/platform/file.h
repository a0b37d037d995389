// Whole files in and out of memory, by C stdio.
#ifndef VQ3900_PLATFORM_FILE_H
#define VQ3900_PLATFORM_FILE_H

#include <optional>
#include <string>

namespace vq3900 {

// The bytes of a file, or nothing when it cannot be opened and read. A null path and a directory cannot be opened.
std::optional<std::string> read_file(const char* path);

}  // namespace vq3900

#endif
