// Every structure that the library writes to files, for the format tables of the documentation.
#ifndef VQ3900_TOOLS_FORMAT_TABLES_H
#define VQ3900_TOOLS_FORMAT_TABLES_H

#include <string>

namespace vq3900::tool {

// One Markdown table a structure: offset, size, type, field; each under its heading.
std::string format_tables();

}  // namespace vq3900::tool

#endif
