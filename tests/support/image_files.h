// A file that a test has the library write, and what is expected at its offsets.
#ifndef VQ3900_TESTS_SUPPORT_IMAGE_FILES_H
#define VQ3900_TESTS_SUPPORT_IMAGE_FILES_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/engine_fixture.h"
#include "support/registers.h"

namespace vq3900::test {

class ImageFile : public EngineTest {
 protected:
  ImageBytes written() const { return bytes_of_file(out_.text()); }

  void fill_output(std::size_t size) const { std::ofstream(out_.text(), std::ios::binary) << std::string(size, 'x'); }

  OutputPath out_;
};

inline std::string not_created(const std::string& path) {
  return "error: create or open file failed, path=" + path + " \n";
}

inline void expect_filler(const ImageBytes& bytes) {
  EXPECT_EQ(bytes, ImageBytes(bytes.size(), 0xFF));
}

struct Word {
  std::size_t offset;
  std::uint32_t value;
};

inline void expect_words(const ImageBytes& bytes, const std::vector<Word>& words) {
  for (const Word& word : words)
    EXPECT_EQ(word_at(bytes, word.offset), word.value) << "offset " << word.offset;
}

// So many registers from the offset on; masks are held against the library's tables.
template <std::size_t Size>
void expect_registers(const ImageBytes& bytes, std::size_t offset, const std::array<Register, Size>& expected,
                      std::size_t count = Size) {
  for (std::size_t i = 0; i < count; ++i) {
    EXPECT_EQ(word_at(bytes, offset + 12 * i), expected[i].address) << "offset " << offset << ", element " << i;
    EXPECT_EQ(word_at(bytes, offset + 12 * i + 8), expected[i].value) << "offset " << offset << ", element " << i;
  }
}

using CopyTable = int32_t (*)(DeRegElement_S*, uint8_t);

// The same against a table of the library.
inline void expect_table(const ImageBytes& bytes, std::size_t offset, CopyTable copy, std::uint8_t count) {
  std::vector<DeRegElement_S> table(count);
  ASSERT_EQ(copy(table.data(), count), 0);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = offset + 12 * i;
    const DeRegElement_S stored{word_at(bytes, at), word_at(bytes, at + 4), word_at(bytes, at + 8)};
    EXPECT_EQ(stored, table[i]) << "offset " << offset << ", element " << i;
  }
}

}  // namespace vq3900::test

#endif
