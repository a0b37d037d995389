// JSON on standard output.
#ifndef VQ3900_TOOLS_JSON_OUTPUT_H
#define VQ3900_TOOLS_JSON_OUTPUT_H

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace vq3900::tool {

// Prints a document. Texts of files may hold bytes that are no UTF-8: they are replaced.
inline void print_json(const nlohmann::ordered_json& document) {
  fmt::print("{}\n", document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

}  // namespace vq3900::tool

#endif
