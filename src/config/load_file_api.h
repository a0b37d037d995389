// Loading a configuration file: open, parse, read, print what went wrong.
#ifndef VQ3900_CONFIG_LOAD_FILE_API_H
#define VQ3900_CONFIG_LOAD_FILE_API_H

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "config/ini_document.h"
#include "config/load_result.h"
#include "platform/diagnostics.h"
#include "platform/file.h"

namespace vq3900 {

// The frame of the loaders whose faults of grammar and values end silently in -5. The reader takes the document.
template <typename Read>
std::int32_t load_file(const char* path, Read read) try {
  std::optional<std::string> text = read_file(path);
  if (!text) {
    print_err("Cannot open file%s\n", path == nullptr ? "" : path);
    return -1;
  }
  IniDocument document;
  document.parse(*std::move(text));
  const LoadResult result = read(document);
  if (result.code != 0) print_err("%s\n", result.text.c_str());
  return result.code;
} catch (const std::exception&) {
  return -5;
}

}  // namespace vq3900

#endif
