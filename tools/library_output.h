// What the library printed, for people.
#ifndef VQ3900_TOOLS_LIBRARY_OUTPUT_H
#define VQ3900_TOOLS_LIBRARY_OUTPUT_H

#include <string>

namespace vq3900::tool {

// Without the trace of the digests.
std::string without_trace(const std::string& printed);

// Passes on to standard error what the library printed, but for the trace; a file goes by the name that the user gave.
void pass_on(const std::string& printed, const std::string& path = "", const std::string& name = "");

}  // namespace vq3900::tool

#endif
