// An image as text for people, as JSON for programs, and against another one.
#ifndef VQ3900_TOOLS_IMAGE_REPORT_H
#define VQ3900_TOOLS_IMAGE_REPORT_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "image_reader.h"

namespace vq3900::tool {

std::string image_text(const std::string& path, const Image& image);
nlohmann::ordered_json image_json(const std::string& path, const Image& image);

// A place where two images differ: "section[item].field", and what each holds; empty where one lacks it.
struct ImageDifference {
  std::string place;
  std::string first;
  std::string second;
};

std::vector<ImageDifference> compare_images(const Image& first, const Image& second);

}  // namespace vq3900::tool

#endif
