// Building configuration images in tests, and holding a section's header, digests and checksum against what the format
// says and what other implementations compute.
#ifndef VQ3900_TESTS_SUPPORT_CONFIG_IMAGE_FIXTURE_H
#define VQ3900_TESTS_SUPPORT_CONFIG_IMAGE_FIXTURE_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

#include "support/capture.h"
#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/image_files.h"
#include "support/peers.h"

namespace vq3900::test {

inline constexpr const char* kDpuFailed = "error: convert dpu configs failed \n";
inline constexpr const char* kD2cFailed = "error: convert d2c configs failed \n";
inline constexpr const char* kIrPreFailed = "error: convert ir_pre_isp configs failed \n";
inline constexpr std::uint32_t kSampleVersion = 0x31303235;  // 1.0.2.5

inline std::string not_loaded(const std::string& path) {
  return "error: load_input_configs, path=" + path + " \n";
}

// --- what the format says

inline std::uint32_t stamp_of(const ImageBytes& image, const SectionFormat& format) {
  return word_at(image, format.offset + 20);
}

// The header's words but for the stamp, the digest of every item, and 0xFF behind the last one.
inline void expect_section(const ImageBytes& image, const SectionFormat& format, std::uint32_t count) {
  SCOPED_TRACE(format.name);
  const ImageBytes section = part(image, format.offset, format.room);
  const std::uint32_t length = 36 + count * format.item_size;
  ImageBytes covered = part(section, 0, length);
  put_word(covered, 4, 0);
  EXPECT_EQ(word_at(section, 0), format.magic);
  EXPECT_EQ(word_at(section, 4), peer_crc32(0, covered));
  EXPECT_EQ(word_at(section, 8), length);
  EXPECT_EQ(word_at(section, 12), format.address);
  EXPECT_EQ(word_at(section, 16), 18U);
  EXPECT_EQ(word_at(section, 24), format.item_magic);
  EXPECT_EQ(word_at(section, 28), count);
  EXPECT_EQ(word_at(section, 32), format.item_size);
  for (std::uint32_t i = 0; i < count; ++i) {
    const ImageBytes item = item_of(image, format, i);
    const std::array<std::uint8_t, 16> digest = peer_md5(part(item, 16, format.digested));
    EXPECT_EQ(part(item, 0, 16), ImageBytes(digest.begin(), digest.end())) << "item " << i;
  }
  expect_filler(part(section, length, format.room - length));
}

// --- the builds

inline ImageBytes golden_image() {
  return bytes_of_file(VQ3900_TEST_DATA "/config_image.bin");
}

class ConfigImage : public ImageFile {
 protected:
  Outcome build(ConfigInput& input) const {
    return outcome_of([&] { return gen_depth_engine_config_flash_file_de(&input.record(), out_.c_str()); });
  }

  // A build that succeeds, with so many digests.
  ImageBytes built(ConfigInput& input, int digests) const {
    EXPECT_EQ(build(input), prints_out(1, digest_trace(digests)));
    return written();
  }

  // A build that fails: the file is there, empty, and the call answers true.
  void expect_failure(ConfigInput& input, const std::string& out, const std::string& err) const {
    fill_output(20000);
    EXPECT_EQ(build(input), (Outcome{1, out, err}));
    EXPECT_EQ(written(), ImageBytes());
  }
};

}  // namespace vq3900::test

#endif
