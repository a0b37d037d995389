#include "bytes/md5.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "support/byte_strings.h"
#include "support/numbers.h"
#include "support/peers.h"

namespace vq3900::test {
namespace {

using Pieces = std::vector<ByteSpan>;

template <typename Context>
Md5Digest in_pieces(const Pieces& pieces) {
  Context context;
  for (const ByteSpan piece : pieces)
    context.update(piece);
  return context.finish();
}

struct Implementation {
  const char* name;
  Md5Digest (*whole)(ByteSpan message);
  Md5Digest (*pieces)(const Pieces& pieces);
};

void PrintTo(const Implementation& implementation, std::ostream* stream) {
  *stream << implementation.name;
}

// Every implementation goes through every test: further ones join this list.
const Implementation kImplementations[] = {
    {"Library", md5, in_pieces<Md5>},
};

std::string hex(std::span<const std::uint8_t> bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

class Md5Of : public testing::TestWithParam<Implementation> {
 protected:
  static std::string whole(ByteSpan message) { return hex(GetParam().whole(message)); }
  static std::string pieces(const Pieces& pieces) { return hex(GetParam().pieces(pieces)); }
};

INSTANTIATE_TEST_SUITE_P(Implementations, Md5Of, testing::ValuesIn(kImplementations),
                         [](const auto& test) { return test.param.name; });

// Another implementation.
std::string reference(ByteSpan message) {
  return hex(peer_md5(message));
}

// --- the published test suite

const struct {
  const char* text;
  const char* digest;
} kPublished[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "57edf4a22be3c955ac49da2e2107b67a"},
};

TEST_P(Md5Of, PublishedDigests) {
  for (const auto& row : kPublished) {
    const ByteVector message = bytes_of_text(row.text);
    EXPECT_EQ(whole(message), row.digest) << row.text;
    EXPECT_EQ(pieces({message}), row.digest) << row.text;
  }
}

TEST_P(Md5Of, NoPieceAtAllIsTheEmptyMessage) {
  EXPECT_EQ(pieces({}), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(pieces({{}, {}}), "d41d8cd98f00b204e9800998ecf8427e");
}

// --- lengths and alignments

TEST_P(Md5Of, AgreesForEveryLengthUpTo300) {
  const ByteVector bytes = random_bytes(300, 11);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const ByteSpan message(bytes.data(), length);
    ASSERT_EQ(whole(message), reference(message)) << length << " bytes";
  }
}

TEST_P(Md5Of, AgreesAtEveryAlignment) {
  const ByteVector bytes = random_bytes(64 + 200, 12);
  for (std::size_t alignment = 0; alignment < 64; ++alignment) {
    const ByteSpan message = ByteSpan(bytes).subspan(alignment, 200);
    ASSERT_EQ(whole(message), reference(message)) << "alignment " << alignment;
  }
}

TEST_P(Md5Of, AgreesForAMegabyte) {
  const ByteVector bytes = random_bytes(std::size_t{1} << 20, 13);
  EXPECT_EQ(whole(bytes), reference(bytes));
}

TEST_P(Md5Of, ReadsNothingBehindTheLastByte) {
  const ByteVector bytes = random_bytes(130, 14);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const GuardedBytes guarded(ByteSpan(bytes.data(), length));
    ASSERT_EQ(whole(guarded.bytes()), reference(guarded.bytes())) << length << " bytes";
  }
}

// From 512 MiB on the number of bits needs the upper half of its 64 bits. Code that is not optimised takes too long.
TEST_P(Md5Of, CountsBitsBeyond32Bits) {
#if defined(__OPTIMIZE__)
  constexpr std::size_t kMegabytes = 513;
  constexpr const char* kDigest = "f3a8799d64129a6fd8a5aa56f199ac54";
#else
  constexpr std::size_t kMegabytes = 16;
  constexpr const char* kDigest = "2c7ab85a893283e98c931e9511add182";
#endif
  const ByteVector zeros(std::size_t{1} << 20, 0);
  EXPECT_EQ(pieces(Pieces(kMegabytes, zeros)), kDigest);
}

// --- pieces

TEST_P(Md5Of, EverySplitInTwoGivesTheDigestOfTheWhole) {
  const ByteVector bytes = random_bytes(200, 15);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const ByteSpan message(bytes.data(), length);
    const std::string expected = reference(message);
    for (std::size_t at = 0; at <= length; ++at)
      ASSERT_EQ(pieces({message.first(at), message.subspan(at)}), expected) << length << " bytes split at " << at;
  }
}

TEST_P(Md5Of, OneByteAtATimeGivesTheDigestOfTheWhole) {
  const ByteVector bytes = random_bytes(500, 16);
  Pieces single;
  for (const std::uint8_t& byte : bytes)
    single.emplace_back(&byte, 1);
  EXPECT_EQ(pieces(single), reference(bytes));
}

// Some of the pieces are empty.
TEST_P(Md5Of, RandomPiecesGiveTheDigestOfTheWhole) {
  constexpr std::uint32_t kSeed = 17;
  Random random(kSeed);
  const ByteVector bytes = random_bytes(5000, kSeed);
  for (int round = 0; round < 200; ++round) {
    const ByteSpan message(bytes.data(), random.word() % (bytes.size() + 1));
    Pieces cut;
    for (ByteSpan rest = message; !rest.empty();) {
      const std::size_t most = random.word() % 3 == 0 ? 300 : 30;
      cut.push_back(rest.first(std::min<std::size_t>(random.word() % most, rest.size())));
      rest = rest.subspan(cut.back().size());
    }
    ASSERT_EQ(pieces(cut), reference(message)) << "round " << round << ", seed " << kSeed;
  }
}

// --- the context as a value

TEST(Md5Context, CopyGoesOnByItself) {
  const ByteVector start = random_bytes(100, 18);
  const ByteVector first_end = random_bytes(60, 19);
  const ByteVector second_end = random_bytes(7, 20);
  Md5 first;
  first.update(start);
  Md5 second = first;
  first.update(first_end);
  second.update(second_end);
  const auto joined = [&start](const ByteVector& end) {
    ByteVector message = start;
    message.insert(message.end(), end.begin(), end.end());
    return message;
  };
  EXPECT_EQ(hex(first.finish()), reference(joined(first_end)));
  EXPECT_EQ(hex(second.finish()), reference(joined(second_end)));
}

}  // namespace
}  // namespace vq3900::test
