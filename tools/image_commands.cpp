// Looking into images and comparing them.
#include <fmt/format.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "commands.h"
#include "image_compare.h"
#include "image_reader.h"
#include "image_report.h"
#include "json_output.h"
#include "platform/file.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

constexpr int kNotComparable = 2;  // 0 equal, 1 different

// The image in a file; what keeps it from being read goes to standard error.
std::optional<Image> open_image(const std::string& path) {
  constexpr std::size_t kLargestFile = std::size_t{64} * 1024 * 1024;
  const std::optional<std::string> text = read_file(path.c_str(), kLargestFile);
  if (!text) {
    fmt::print(stderr, "vq3900-tool: {}: cannot be opened\n", path);
    return std::nullopt;
  }
  std::optional<Image> image = read_image(bytes_of(*text));
  if (!image) {
    fmt::print(stderr, "vq3900-tool: {}: {} bytes that are no file of the library\n", path, text->size());
  }
  return image;
}

}  // namespace

int image_info_command(const std::string& path, bool json) {
  const std::optional<Image> image = open_image(path);
  if (!image) return kFailed;
  if (json) {
    print_json(image_json(path, *image));
  } else {
    fmt::print("{}", image_text(path, *image));
  }
  return image->good() ? kDone : kFailed;
}

int image_diff_command(const std::string& first, const std::string& second, bool json) {
  const std::optional<Image> a = open_image(first);
  const std::optional<Image> b = open_image(second);
  if (!a || !b) return kNotComparable;
  const std::vector<ImageDifference> differences = compare_images(*a, *b);
  if (json) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const ImageDifference& difference : differences) {
      list.push_back({{"place", difference.place}, {"first", difference.first}, {"second", difference.second}});
    }
    print_json(list);
  } else {
    for (const ImageDifference& difference : differences) {
      fmt::print("{}: {} -> {}\n", difference.place, difference.first, difference.second);
    }
    fmt::print("{} difference{}\n", differences.size(), differences.size() == 1 ? "" : "s");
  }
  return differences.empty() ? kDone : kFailed;
}

}  // namespace vq3900::tool
