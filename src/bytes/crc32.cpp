// A message is a polynomial over GF(2), its bits the coefficients; the CRC is the remainder of its division by
// P = x^32 + x^26 + ... + 1. In the reflected form the lowest bit of a byte comes first and P is 0xEDB88320.
//
// One byte at a time, the remainder r moves on as
//     r' = table[0][(r ^ byte) & 0xFF] ^ (r >> 8)
// where table[0][b] is the remainder of the byte b followed by 32 zero bits. Division is linear: the effect of a byte
// that is followed by k more bytes is table[k][b], the same remainder moved on by k zero bytes. So eight bytes can be
// taken at once as the sum (xor) of eight table entries that do not depend on each other.
//
// Still each word waits for the one before it. Long messages go in blocks of several words: each word of a block is
// moved on by a whole block, to the word of the same place in the next one, so that as many sums run side by side. In
// the last block they come together, word by word.
#include "bytes/crc32.h"

#include <array>
#include <utility>

#include "bytes/crc32_fold.h"
#include "bytes/crc32_paths.h"
#include "bytes/little_endian.h"

namespace vq3900 {

namespace {

constexpr std::size_t kWord = 8;
constexpr std::size_t kLanes = 5;  // words of a block
constexpr std::size_t kBlock = kLanes * kWord;

using WordTables = std::array<std::array<std::uint32_t, 256>, kWord>;

// The tables of a word's bytes, the last byte's first, when that many more bytes follow the word.
constexpr WordTables make_tables(std::size_t following) {
  WordTables tables{};
  std::array<std::uint32_t, 256> single{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    single[byte] = byte;
    for (int bit = 0; bit < 8; ++bit)
      single[byte] = times_x(single[byte]);
  }
  for (std::size_t byte = 0; byte < 256; ++byte) {
    std::uint32_t remainder = single[byte];
    for (std::size_t k = 0; k < following + kWord; ++k) {
      if (k >= following) tables[k - following][byte] = remainder;
      remainder = single[remainder & 0xFF] ^ (remainder >> 8);
    }
  }
  return tables;
}

constexpr WordTables kToNextWord = make_tables(0);
constexpr WordTables kToNextBlock = make_tables(kBlock - kWord);

inline std::uint32_t take_word(std::uint32_t remainder, const std::uint8_t* data, const WordTables& tables) {
  const std::uint32_t low = load_little<std::uint32_t>(data) ^ remainder;
  const auto high = load_little<std::uint32_t>(data + 4);
  return tables[7][low & 0xFF] ^ tables[6][(low >> 8) & 0xFF] ^ tables[5][(low >> 16) & 0xFF] ^ tables[4][low >> 24] ^
         tables[3][high & 0xFF] ^ tables[2][(high >> 8) & 0xFF] ^ tables[1][(high >> 16) & 0xFF] ^
         tables[0][high >> 24];
}

template <std::size_t... Lane>
std::uint32_t take_blocks(std::uint32_t remainder, const std::uint8_t* data, std::size_t count,
                          std::index_sequence<Lane...> /*lanes*/) {
  std::array<std::uint32_t, kLanes> lanes{remainder};
  for (; count > 1; --count, data += kBlock)
    ((lanes[Lane] = take_word(lanes[Lane], data + Lane * kWord, kToNextBlock)), ...);
  remainder = 0;
  ((remainder = take_word(remainder ^ lanes[Lane], data + Lane * kWord, kToNextWord)), ...);
  return remainder;
}

constexpr CodePath<Crc32Function> kPaths[] = {
#if defined(VQ3900_X86_64_WIDE)
    {"clmul512", cpu_has_clmul512, crc32_clmul512},
#endif
#if defined(VQ3900_X86_64)
    {"clmul", cpu_has_clmul, crc32_clmul},
#endif
    {"portable", always_supported, crc32_portable},
};

}  // namespace

std::span<const CodePath<Crc32Function>> crc32_paths() {
  return kPaths;
}

std::uint32_t crc32(std::uint32_t initial, const std::uint8_t* data, std::size_t length) {
#if defined(VQ3900_X86_64_WIDE)
  if (cpu_has_clmul512()) return crc32_clmul512(initial, data, length);
#endif
#if defined(VQ3900_X86_64)
  if (cpu_has_clmul()) return crc32_clmul(initial, data, length);
#endif
  return crc32_portable(initial, data, length);
}

std::uint32_t crc32_portable(std::uint32_t initial, const std::uint8_t* data, std::size_t length) {
  std::uint32_t remainder = ~initial;
  if (const std::size_t blocks = length / kBlock; blocks > 0) {
    remainder = take_blocks(remainder, data, blocks, std::make_index_sequence<kLanes>{});
    data += blocks * kBlock;
    length -= blocks * kBlock;
  }
  for (; length >= kWord; data += kWord, length -= kWord)
    remainder = take_word(remainder, data, kToNextWord);
  for (; length > 0; ++data, --length)
    remainder = kToNextWord[0][(remainder ^ *data) & 0xFF] ^ (remainder >> 8);
  return ~remainder;
}

}  // namespace vq3900
