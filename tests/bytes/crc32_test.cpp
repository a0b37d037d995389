#include "bytes/crc32.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "bytes/crc32_paths.h"
#include "support/byte_strings.h"
#include "support/code_paths.h"
#include "support/numbers.h"
#include "support/peers.h"

namespace vq3900::test {
namespace {

// Every implementation goes through every test, and so does the choice among them.
std::vector<CodePath<Crc32Function>> implementations() {
  std::vector<CodePath<Crc32Function>> all(crc32_paths().begin(), crc32_paths().end());
  all.push_back({"chosen", always_supported, crc32});
  return all;
}

class Crc32 : public CodePathTest<Crc32Function> {
 protected:
  static std::uint32_t run(std::uint32_t initial, ByteSpan bytes) {
    return path()(initial, bytes.data(), bytes.size());
  }
};

INSTANTIATE_TEST_SUITE_P(Implementations, Crc32, testing::ValuesIn(implementations()), kPathName);

// Another implementation.
std::uint32_t reference(std::uint32_t initial, ByteSpan bytes) {
  return peer_crc32(initial, bytes);
}

// --- published values

ByteVector ascending(std::size_t count) {
  ByteVector bytes(count);
  for (std::size_t i = 0; i < count; ++i)
    bytes[i] = static_cast<std::uint8_t>(i);
  return bytes;
}

TEST_P(Crc32, PublishedValues) {
  const ByteVector up = ascending(32);
  const struct {
    const char* name;
    ByteVector bytes;
    std::uint32_t crc;
  } rows[] = {
      {"check value", bytes_of_text("123456789"), 0xCBF43926},
      {"empty", {}, 0},
      {"a", bytes_of_text("a"), 0xE8B7BE43},
      {"abc", bytes_of_text("abc"), 0x352441C2},
      {"message digest", bytes_of_text("message digest"), 0x20159D7F},
      {"alphabet", bytes_of_text("abcdefghijklmnopqrstuvwxyz"), 0x4C2750BD},
      {"letters and digits",
       bytes_of_text("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
       0x1FC2E6D2},
      {"digits",
       bytes_of_text("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
       0x7CA94A72},
      {"pangram", bytes_of_text("The quick brown fox jumps over the lazy dog"), 0x414FA339},
      {"one zero byte", {0}, 0xD202EF8D},
      {"one byte of ones", {0xFF}, 0xFF000000},
      {"32 zero bytes", ByteVector(32, 0), 0x190A55AD},
      {"32 bytes of ones", ByteVector(32, 0xFF), 0xFF6CAB0B},
      {"32 ascending bytes", up, 0x91267E8A},
      {"32 descending bytes", ByteVector(up.rbegin(), up.rend()), 0x9AB0EF72},
  };
  for (const auto& row : rows)
    EXPECT_EQ(run(0, row.bytes), row.crc) << row.name;
}

TEST_P(Crc32, CheckValueOfTheNineDigitsAndNothingOfNoBytes) {
  const ByteVector digits = bytes_of_text("123456789");
  EXPECT_EQ(path()(0, digits.data(), 9), 0xCBF43926U);
  EXPECT_EQ(path()(0, digits.data(), 0), 0U);
}

// From a register of zero bits a byte leaves its own table entry.
TEST_P(Crc32, FirstTableEntriesAreThePublishedOnes) {
  const std::uint32_t entries[] = {0x00000000, 0x77073096, 0xEE0E612C, 0x990951BA};
  for (std::size_t i = 0; i < std::size(entries); ++i) {
    const auto byte = static_cast<std::uint8_t>(i);
    EXPECT_EQ(~path()(0xFFFFFFFF, &byte, 1), entries[i]) << "byte " << i;
  }
}

// --- continuing

TEST_P(Crc32, NoBytesLeaveTheInitialValue) {
  const std::uint8_t byte = 0x5A;
  for (const std::uint32_t initial : {0U, 1U, 0x80000000U, 0xCBF43926U, 0xFFFFFFFFU}) {
    EXPECT_EQ(path()(initial, &byte, 0), initial);
    EXPECT_EQ(path()(initial, nullptr, 0), initial);
  }
}

TEST_P(Crc32, ContinuesFromTheValueOfTheBytesBefore) {
  EXPECT_EQ(run(0xCBF43926, bytes_of_text("0")), 0x261DAEE5U);  // of the ten digits
  const ByteVector bytes = random_bytes(700, 2);
  for (const std::uint32_t initial : {1U, 0x80000000U, 0x12345678U, 0xFFFFFFFFU}) {
    for (const std::size_t length : {1U, 7U, 8U, 9U, 63U, 64U, 65U, 255U, 256U, 700U}) {
      const ByteSpan message(bytes.data(), length);
      EXPECT_EQ(run(initial, message), reference(initial, message)) << length << " bytes from " << initial;
    }
  }
}

TEST_P(Crc32, EverySplitInTwoGivesTheValueOfTheWhole) {
  const ByteVector bytes = random_bytes(300, 3);
  const ByteSpan message = bytes;
  const std::uint32_t whole = run(0, message);
  EXPECT_EQ(whole, reference(0, message));
  for (std::size_t at = 0; at <= message.size(); ++at)
    EXPECT_EQ(run(run(0, message.first(at)), message.subspan(at)), whole) << "split at " << at;
}

TEST_P(Crc32, OneByteAtATimeGivesTheValueOfTheWhole) {
  const ByteVector bytes = random_bytes(2000, 4);
  std::uint32_t crc = 0;
  for (const std::uint8_t& byte : bytes)
    crc = path()(crc, &byte, 1);
  EXPECT_EQ(crc, reference(0, bytes));
}

TEST_P(Crc32, RandomPiecesGiveTheValueOfTheWhole) {
  constexpr std::uint32_t kSeed = 5;
  Random random(kSeed);
  const ByteVector bytes = random_bytes(20000, kSeed);
  std::uint32_t crc = 0;
  for (ByteSpan rest = bytes; !rest.empty();) {
    const std::size_t length = random.word() % (random.word() % 4 == 0 ? 2000 : 40);
    const ByteSpan piece = rest.first(std::min(length, rest.size()));
    crc = run(crc, piece);
    rest = rest.subspan(piece.size());
  }
  EXPECT_EQ(crc, reference(0, bytes)) << "seed " << kSeed;
}

// --- lengths and alignments

TEST_P(Crc32, AgreesForEveryLengthUpTo2000) {
  const ByteVector bytes = random_bytes(2000, 6);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const ByteSpan message(bytes.data(), length);
    ASSERT_EQ(run(0, message), reference(0, message)) << length << " bytes";
  }
}

TEST_P(Crc32, AgreesForRandomLengthsAtEveryAlignment) {
  constexpr std::uint32_t kSeed = 7;
  Random random(kSeed);
  const ByteVector bytes = random_bytes(2000 + 2 * 64, kSeed);
  // Vectors of bytes need not start on a boundary.
  const auto boundary = 64 - reinterpret_cast<std::uintptr_t>(bytes.data()) % 64;
  for (std::size_t alignment = 0; alignment < 64; ++alignment) {
    for (int i = 0; i < 40; ++i) {
      const std::size_t length = random.word() % (i < 20 ? 200 : 2001);
      const ByteSpan message = ByteSpan(bytes).subspan(boundary + alignment, length);
      ASSERT_EQ(run(0, message), reference(0, message))
          << length << " bytes at alignment " << alignment << ", seed " << kSeed;
    }
  }
}

TEST_P(Crc32, AgreesForAMegabyte) {
  const ByteVector bytes = random_bytes((1U << 20) + 5, 8);
  EXPECT_EQ(run(0, bytes), reference(0, bytes));
}

TEST_P(Crc32, ReadsNothingBehindTheLastByte) {
  const ByteVector bytes = random_bytes(700, 9);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const GuardedBytes guarded(ByteSpan(bytes.data(), length));
    ASSERT_EQ(run(0, guarded.bytes()), reference(0, guarded.bytes())) << length << " bytes";
  }
}

TEST_P(Crc32, ReadsNothingBeforeTheFirstByte) {
  const ByteVector bytes = random_bytes(700, 10);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    FencedArray<std::uint8_t> fenced(length, FencedArray<std::uint8_t>::Side::kStart);
    std::copy_n(bytes.begin(), length, fenced.data());
    ASSERT_EQ(run(0, fenced.span()), reference(0, fenced.span())) << length << " bytes";
  }
}

}  // namespace
}  // namespace vq3900::test
