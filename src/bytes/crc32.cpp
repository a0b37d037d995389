// A message is a polynomial over GF(2), its bits the coefficients; the CRC is the remainder of its division by
// P = x^32 + x^26 + ... + 1. In the reflected form the lowest bit of a byte comes first and P is 0xEDB88320.
//
// One byte at a time, the remainder r moves on as
//     r' = table[0][(r ^ byte) & 0xFF] ^ (r >> 8)
// where table[0][b] is the remainder of the byte b followed by 32 zero bits. Division is linear: the effect of a byte
// that is followed by k more bytes is table[k][b], the same remainder moved on by k zero bytes. So eight bytes can be
// taken at once as the sum (xor) of eight table entries that do not depend on each other.
#include "bytes/crc32.h"

#include <array>

#include "bytes/little_endian.h"

namespace vq3900 {

namespace {

constexpr std::uint32_t kPolynomial = 0xEDB88320;
constexpr std::size_t kSlices = 8;

using SliceTables = std::array<std::array<std::uint32_t, 256>, kSlices>;

constexpr SliceTables make_tables() {
  SliceTables tables{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t remainder = byte;
    for (int bit = 0; bit < 8; ++bit)
      remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? kPolynomial : 0);
    tables[0][byte] = remainder;
  }
  for (std::size_t slice = 1; slice < kSlices; ++slice) {
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint32_t before = tables[slice - 1][byte];
      tables[slice][byte] = tables[0][before & 0xFF] ^ (before >> 8);
    }
  }
  return tables;
}

constexpr SliceTables kTables = make_tables();

}  // namespace

std::uint32_t crc32(std::uint32_t initial, const std::uint8_t* data, std::size_t length) {
  std::uint32_t remainder = ~initial;
  for (; length >= kSlices; data += kSlices, length -= kSlices) {
    const std::uint32_t low = load_little<std::uint32_t>(data) ^ remainder;
    const auto high = load_little<std::uint32_t>(data + 4);
    remainder = kTables[7][low & 0xFF] ^ kTables[6][(low >> 8) & 0xFF] ^ kTables[5][(low >> 16) & 0xFF] ^
                kTables[4][low >> 24] ^ kTables[3][high & 0xFF] ^ kTables[2][(high >> 8) & 0xFF] ^
                kTables[1][(high >> 16) & 0xFF] ^ kTables[0][high >> 24];
  }
  for (; length > 0; ++data, --length)
    remainder = kTables[0][(remainder ^ *data) & 0xFF] ^ (remainder >> 8);
  return ~remainder;
}

}  // namespace vq3900
