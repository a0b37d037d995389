#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "bytes/md5_gen_api.h"
#include "support/byte_strings.h"
#include "support/capture.h"

namespace vq3900::test {
namespace {

constexpr const char* kTrace =
    "Md5_gen step 1!\n"
    "Md5_gen step 2!\n"
    "Md5_gen step 3!\n"
    "Md5_gen step 4!\n"
    "start MD5Encode!\n"
    "MD5Encode 1!\n"
    "MD5Encode 2!\n"
    "MD5Encode 3!\n"
    "MD5Encode done!\n"
    "Md5_gen end!\n";

using Digest = std::array<std::uint8_t, 16>;

constexpr Digest kDigestOfAbc{
    0x90, 0x01, 0x50, 0x98, 0x3C, 0xD2, 0x4F, 0xB0, 0xD6, 0x96, 0x3F, 0x7D, 0x28, 0xE1, 0x7F, 0x72};

// What the caller's buffer holds before: a digest that nothing was written to.
constexpr Digest kBefore{
    0xA5, 0x5A, 0xA5, 0x5A, 0xA5, 0x5A, 0xA5, 0x5A, 0xA5, 0x5A, 0xA5, 0x5A, 0xA5, 0x5A, 0xA5, 0x5A};

void expect_prints(const Printed& printed, const std::string& out) {
  EXPECT_EQ(printed.out, out);
  EXPECT_EQ(printed.err, "");
}

void expect_nothing_done(const std::uint8_t* data, std::uint32_t length) {
  Digest digest = kBefore;
  expect_prints(printed_by([&] { Md5_gen(data, digest.data(), length); }), "");
  EXPECT_EQ(digest, kBefore);
}

TEST(Md5Gen, WritesTheDigestOfAbcAndPrintsTheTrace) {
  const ByteVector abc = bytes_of_text("abc");
  Digest digest = kBefore;
  expect_prints(printed_by([&] { Md5_gen(abc.data(), digest.data(), 3); }), kTrace);
  EXPECT_EQ(digest, kDigestOfAbc);
}

TEST(Md5Gen, LengthOfZeroPrintsNothingAndLeavesTheBufferUnchanged) {
  const ByteVector abc = bytes_of_text("abc");
  expect_nothing_done(abc.data(), 0);
}

TEST(Md5Gen, NullDataPrintsNothingAndLeavesTheBufferUnchanged) {
  expect_nothing_done(nullptr, 3);
  expect_nothing_done(nullptr, std::numeric_limits<std::uint32_t>::max());
  expect_nothing_done(nullptr, 0);
}

TEST(Md5Gen, NullDigestPrintsNothing) {
  const ByteVector abc = bytes_of_text("abc");
  expect_prints(printed_by([&] { Md5_gen(abc.data(), nullptr, 3); }), "");
  expect_prints(printed_by([] { Md5_gen(nullptr, nullptr, 0); }), "");
}

TEST(Md5Gen, EveryCallPrintsAgainAndStartsAfresh) {
  const ByteVector abc = bytes_of_text("abc");
  Digest first = kBefore;
  Digest second = kBefore;
  const Printed printed = printed_by([&] {
    Md5_gen(abc.data(), first.data(), 3);
    Md5_gen(nullptr, second.data(), 3);
    Md5_gen(abc.data(), second.data(), 3);
  });
  expect_prints(printed, std::string(kTrace) + kTrace);
  EXPECT_EQ(first, kDigestOfAbc);
  EXPECT_EQ(second, kDigestOfAbc);
}

TEST(Md5Gen, CoversTheLengthAndNoMore) {
  const ByteVector text = bytes_of_text("abcdef");
  Digest digest = kBefore;
  printed_by([&] { Md5_gen(text.data(), digest.data(), 3); });
  EXPECT_EQ(digest, kDigestOfAbc);
}

// As in an image: the digest lies in the record, before the bytes that it covers.
TEST(Md5Gen, WritesSixteenBytesAndNothingAround) {
  ByteVector record(1 + 16, 0xEE);
  for (const std::uint8_t byte : bytes_of_text("abc"))
    record.push_back(byte);
  printed_by([&] { Md5_gen(record.data() + 17, record.data() + 1, 3); });
  EXPECT_EQ(record[0], 0xEE);
  EXPECT_TRUE(std::equal(kDigestOfAbc.begin(), kDigestOfAbc.end(), record.begin() + 1));
  EXPECT_EQ(ByteVector(record.begin() + 17, record.end()), bytes_of_text("abc"));
}

TEST(Md5Gen, LongMessagePrintsTheSameTrace) {
  const ByteVector digits =
      bytes_of_text("12345678901234567890123456789012345678901234567890123456789012345678901234567890");
  Digest digest = kBefore;
  expect_prints(printed_by([&] { Md5_gen(digits.data(), digest.data(), static_cast<std::uint32_t>(digits.size())); }),
                kTrace);
  EXPECT_EQ(digest,
            (Digest{0x57, 0xED, 0xF4, 0xA2, 0x2B, 0xE3, 0xC9, 0x55, 0xAC, 0x49, 0xDA, 0x2E, 0x21, 0x07, 0xB6, 0x7A}));
}

}  // namespace
}  // namespace vq3900::test
