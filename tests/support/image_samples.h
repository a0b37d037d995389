// Files of every kind for the tests of what looks into them, and finding one's way in what was read.
#ifndef VQ3900_TESTS_SUPPORT_IMAGE_SAMPLES_H
#define VQ3900_TESTS_SUPPORT_IMAGE_SAMPLES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "image_reader.h"
#include "support/config_images.h"
#include "support/engine_fixture.h"

namespace vq3900::test {

// The sample files, built once.
struct Samples {
  ImageBytes config;
  ImageBytes small;  // one configuration and one group of each kind
  ImageBytes registers;
  ImageBytes snapshot;
};

inline const Samples& samples() {
  static const Samples built = [] {
    reset_engine();
    const TempFile d2c(d2c_groups_text(1));
    const TempFile ir_pre(ir_pre_groups_text(1));
    ConfigInput small({example("mono_640x480.ini")}, d2c.path(), ir_pre.path());
    ConfigInput all;
    Samples made{config_image(all), config_image(small), sample_register_file(), sample_snapshot()};
    reset_engine();
    return made;
  }();
  return built;
}

// Reads from a block of the heap of just that size: what checks memory accesses sees every read behind it.
inline std::optional<tool::Image> read_exactly(const ImageBytes& bytes) {
  const std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), copy.get());
  return tool::read_image({copy.get(), bytes.size()});
}

inline tool::Image image_of(const ImageBytes& bytes) {
  const std::optional<tool::Image> image = read_exactly(bytes);
  EXPECT_TRUE(image) << bytes.size() << " bytes";
  return image.value_or(tool::Image{});
}

inline const tool::ImageSection& section_of(const tool::Image& image, const std::string& name) {
  static const tool::ImageSection kNone;
  for (const tool::ImageSection& section : image.sections) {
    if (section.name == name) return section;
  }
  ADD_FAILURE() << "no section " << name;
  return kNone;
}

inline std::string text_of(const std::vector<tool::ImageField>& fields, const std::string& name) {
  for (const tool::ImageField& field : fields) {
    if (field.name == name) return field.text;
  }
  ADD_FAILURE() << "no field " << name;
  return "";
}

}  // namespace vq3900::test

#endif
