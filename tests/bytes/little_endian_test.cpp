#include "bytes/little_endian.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>

#include "support/byte_strings.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

constexpr std::uint8_t kUntouched = 0xEE;
constexpr std::size_t kAround = 9;

// At every place, aligned or not: the number lies in those bytes, its neighbours stay, and it comes back.
template <typename Number>
void expect_bytes(Number number, const ByteVector& bytes) {
  for (std::size_t at = 0; at < kAround; ++at) {
    SCOPED_TRACE(testing::Message() << "number " << +number << " at byte " << at);
    ByteVector expected(kAround + bytes.size(), kUntouched);
    std::copy(bytes.begin(), bytes.end(), expected.begin() + static_cast<std::ptrdiff_t>(at));
    ByteVector actual(expected.size(), kUntouched);
    store_little(number, actual.data() + at);
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(load_little<Number>(expected.data() + at), number);
  }
}

TEST(LittleEndian, IntegersOfOneByte) {
  expect_bytes<std::uint8_t>(0, {0x00});
  expect_bytes<std::uint8_t>(0xFE, {0xFE});
  expect_bytes<std::int8_t>(-2, {0xFE});
  expect_bytes<std::int8_t>(-128, {0x80});
  expect_bytes<std::int8_t>(127, {0x7F});
}

TEST(LittleEndian, IntegersOfTwoBytes) {
  expect_bytes<std::uint16_t>(0x1234, {0x34, 0x12});
  expect_bytes<std::uint16_t>(0xFF00, {0x00, 0xFF});
  expect_bytes<std::int16_t>(-2, {0xFE, 0xFF});
  expect_bytes<std::int16_t>(std::numeric_limits<std::int16_t>::min(), {0x00, 0x80});
}

TEST(LittleEndian, IntegersOfFourBytes) {
  expect_bytes<std::uint32_t>(0x12345678, {0x78, 0x56, 0x34, 0x12});
  expect_bytes<std::uint32_t>(0xFEDCBA98, {0x98, 0xBA, 0xDC, 0xFE});
  expect_bytes<std::int32_t>(-2, {0xFE, 0xFF, 0xFF, 0xFF});
  expect_bytes<std::int32_t>(std::numeric_limits<std::int32_t>::min(), {0x00, 0x00, 0x00, 0x80});
}

TEST(LittleEndian, IntegersOfEightBytes) {
  expect_bytes<std::uint64_t>(0x123456789ABCDEF0, {0xF0, 0xDE, 0xBC, 0x9A, 0x78, 0x56, 0x34, 0x12});
  expect_bytes<std::int64_t>(-2, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
  expect_bytes<std::int64_t>(std::numeric_limits<std::int64_t>::min(),
                             {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80});
}

TEST(LittleEndian, FloatsLieAsTheirBits) {
  expect_bytes(0.0F, {0x00, 0x00, 0x00, 0x00});
  expect_bytes(1.0F, {0x00, 0x00, 0x80, 0x3F});
  expect_bytes(-2.5F, {0x00, 0x00, 0x20, 0xC0});
  expect_bytes(50.1F, {0x66, 0x66, 0x48, 0x42});
  expect_bytes(kInfinity, {0x00, 0x00, 0x80, 0x7F});
  expect_bytes(std::numeric_limits<float>::denorm_min(), {0x01, 0x00, 0x00, 0x00});
}

TEST(LittleEndian, DoublesLieAsTheirBits) {
  expect_bytes(1.0, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF0, 0x3F});
  expect_bytes(0.1, {0x9A, 0x99, 0x99, 0x99, 0x99, 0x99, 0xB9, 0x3F});
  expect_bytes(-2.5, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0xC0});
  expect_bytes(std::numeric_limits<double>::max(), {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xEF, 0x7F});
}

// These compare by bits: a zero equals the other zero, and no NaN equals itself.
TEST(LittleEndian, NegativeZeroAndNanKeepTheirBits) {
  const std::uint8_t negative_zero[] = {0x00, 0x00, 0x00, 0x80};
  EXPECT_EQ(bits_of(load_little<float>(negative_zero)), 0x80000000U);
  const std::uint8_t nan[] = {0x23, 0x01, 0x00, 0x00, 0x00, 0x00, 0xF8, 0x7F};
  const auto number = load_little<double>(nan);
  EXPECT_EQ(bits_of(number), 0x7FF8000000000123U);
  std::array<std::uint8_t, 8> stored{};
  store_little(number, stored.data());
  EXPECT_EQ(ByteVector(stored.begin(), stored.end()), ByteVector(std::begin(nan), std::end(nan)));
}

TEST(LittleEndian, WordsLieOneBehindTheOther) {
  const std::array<std::uint32_t, 2> words{0x12345678, 0xFEDCBA98};
  ByteVector bytes(10, kUntouched);
  store_little_words(words, bytes.data() + 1);
  EXPECT_EQ(bytes, (ByteVector{kUntouched, 0x78, 0x56, 0x34, 0x12, 0x98, 0xBA, 0xDC, 0xFE, kUntouched}));
  store_little_words({}, nullptr);
}

// What a machine of the other byte order does before it stores.
TEST(LittleEndian, BytesReverse) {
  EXPECT_EQ(detail::reverse_bytes(std::uint8_t{0x12}), 0x12);
  EXPECT_EQ(detail::reverse_bytes(std::uint16_t{0x12F4}), 0xF412);
  EXPECT_EQ(detail::reverse_bytes(std::uint32_t{0x123456F8}), 0xF8563412U);
  EXPECT_EQ(detail::reverse_bytes(std::uint64_t{0x123456789ABCDEF0}), 0xF0DEBC9A78563412U);
}

}  // namespace
}  // namespace vq3900::test
