// Two images against each other.
#ifndef VQ3900_TOOLS_IMAGE_COMPARE_H
#define VQ3900_TOOLS_IMAGE_COMPARE_H

#include <string>
#include <vector>

#include "image_reader.h"

namespace vq3900::tool {

// A place where two images differ: "section[item].field", or "bytes 28 to 31" outside every field, and what each holds;
// empty where one lacks it.
struct ImageDifference {
  std::string place;
  std::string first;
  std::string second;
};

// In the order of their offsets; kind and size come first.
std::vector<ImageDifference> compare_images(const Image& first, const Image& second);

}  // namespace vq3900::tool

#endif
