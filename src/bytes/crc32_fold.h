// The constants of folding, where carry-less multiplications take the place of the tables. See crc32.cpp for the CRC.
//
// A register holds a part A of the message, as a polynomial. When the message goes on, A stands n bits higher, as A
// x^n; modulo P the product A (x^n mod P) will do, and can be added to the n bits that follow. So a register of the
// message's first bits takes in all others, one register's width at a time, and ends with a polynomial of the same
// remainder.
//
// Reflected, a register of w bits has the coefficient of x^(w - 1 - i) at bit i. The product of two such numbers of 64
// bits has 127: in a register of 128 bits it stands one bit too low, which multiplies it by x. So what moves a register
// of 128 bits by n is x^(n - 1) for its high half, and x^(n + 63) for its low half, which comes 64 bits before it.
#ifndef VQ3900_BYTES_CRC32_FOLD_H
#define VQ3900_BYTES_CRC32_FOLD_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace vq3900 {

inline constexpr std::uint32_t kCrc32Polynomial = 0xEDB88320;  // reflected; x^32 goes without saying

// r x mod P
constexpr std::uint32_t times_x(std::uint32_t r) {
  return (r >> 1) ^ ((r & 1) != 0 ? kCrc32Polynomial : 0);
}

// x^n mod P as a reflected number of 64 bits
constexpr std::uint64_t power_of_x(std::size_t n) {
  std::uint32_t power = 0x80000000;
  for (; n > 0; --n)
    power = times_x(power);
  return std::uint64_t{power} << 32;
}

// Two factors as they lie in a register.
struct alignas(16) FoldFactors {
  std::uint64_t low;
  std::uint64_t high;
};

// What moves a register of 128 bits by that many bytes, at least 1.
constexpr FoldFactors fold_by(std::size_t bytes) {
  return {power_of_x(8 * bytes + 63), power_of_x(8 * bytes - 1)};
}

// The factors for every number of bytes up to Most, at its own index.
template <std::size_t Most>
constexpr std::array<FoldFactors, Most + 1> folds_up_to() {
  std::array<FoldFactors, Most + 1> factors{};
  for (std::size_t bytes = 1; bytes <= Most; ++bytes)
    factors[bytes] = fold_by(bytes);
  return factors;
}

// floor(x^64 / P) as a reflected number of 33 bits. The division takes P away wherever the remainder reaches x^31 and
// is moved on.
constexpr std::uint64_t crc32_quotient() {
  std::uint64_t quotient = 1;
  std::uint32_t remainder = kCrc32Polynomial;  // of x^32
  for (int bit = 1; bit <= 32; ++bit) {
    quotient |= std::uint64_t{remainder & 1} << bit;
    remainder = times_x(remainder);
  }
  return quotient;
}

// P as a reflected number of 33 bits.
constexpr std::uint64_t crc32_divisor() {
  return (std::uint64_t{kCrc32Polynomial} << 1) | 1;
}

}  // namespace vq3900

#endif
