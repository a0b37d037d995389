#include "image_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/image_samples.h"

namespace vq3900::test {
namespace {

using testing::HasSubstr;

TEST(ImageText, ShowsSectionsFieldsRegistersAndChecks) {
  const std::string text = image_text("a.bin", image_of(samples().config));
  EXPECT_TRUE(text.starts_with("a.bin: configuration image, 16384 bytes\n")) << text.substr(0, 80);
  EXPECT_THAT(text, HasSubstr("\nSection dpu at 0: 2 items\n"));
  EXPECT_THAT(text, HasSubstr("\nSection ir_pre at 12288: 2 items\n"));
  EXPECT_THAT(text, HasSubstr("0x31303235 (version 1.0.2.5, or 1996-02-25 09:56:05 UTC)\n"));
  EXPECT_THAT(text, HasSubstr("0x500010D0  mask 00FFFFFF  value 00500320  image_width 1280, image_height 800\n"));
  EXPECT_THAT(text, HasSubstr("  ok   digest of item 2: "));
  EXPECT_TRUE(text.ends_with("\n33 checks, 0 bad\n"));
}

TEST(ImageText, NamesWhatIsBad) {
  ImageBytes bytes = samples().config;
  bytes[kD2c.offset + 36 + 70] ^= 1;
  const std::string text = image_text("a.bin", image_of(bytes));
  EXPECT_THAT(text, HasSubstr("  BAD  CRC-32: stored 0x"));
  EXPECT_TRUE(text.ends_with("\n33 checks, 1 bad\n"));
}

TEST(ImageText, UnprintableCharactersAreEscaped) {
  ImageBytes bytes = samples().config;
  const std::string desc = "a\x1B[2J\xFFz";
  std::copy(desc.begin(), desc.end(), bytes.begin() + kD2c.offset + 36 + 16);
  EXPECT_EQ(text_of(section_of(image_of(bytes), "d2c").items[0].fields, "desc").substr(0, 13), "a\\x1B[2J\\xFFz");
}

TEST(ImageJson, HoldsSectionsItemsRegistersAndChecks) {
  const auto json = image_json("a.bin", image_of(samples().config));
  EXPECT_EQ(json.at("file"), "a.bin");
  EXPECT_EQ(json.at("kind"), "configuration image");
  EXPECT_EQ(json.at("good"), true);
  EXPECT_EQ(json.at("sections").at(0).at("header").at("item_count"), 2);
  const auto& item = json.at("sections").at(0).at("items").at(1);
  EXPECT_EQ(item.at("fields").at("mode.dpu_desc"), "mono_640x480");
  EXPECT_EQ(item.at("fields").at("mode.in_ir_res"), (std::vector<int>{640, 480}));
  EXPECT_EQ(item.at("registers").at(0).at("name"), "basic_d2c_d2d_ctrl");
  EXPECT_EQ(item.at("registers").at(0).at("registers").at(2).at("value"), 0x14060030U);
  EXPECT_EQ(json.at("sections").at(1).at("checks").size(), 11U);
}

}  // namespace
}  // namespace vq3900::test
