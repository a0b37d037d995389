// An image as text for people and as JSON for programs.
#ifndef VQ3900_TOOLS_IMAGE_REPORT_H
#define VQ3900_TOOLS_IMAGE_REPORT_H

#include <nlohmann/json.hpp>
#include <string>

#include "image_reader.h"

namespace vq3900::tool {

std::string image_text(const std::string& path, const Image& image);
nlohmann::ordered_json image_json(const std::string& path, const Image& image);

}  // namespace vq3900::tool

#endif
