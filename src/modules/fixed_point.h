// Register fields and fixed-point numbers.
//
// A field is a contiguous run of bits given by its mask. A fixed-point field of N bits with F fraction bits holds the
// integer R for the number R / 2^F; a signed one is N-bit two's complement.
#ifndef VQ3900_MODULES_FIXED_POINT_H
#define VQ3900_MODULES_FIXED_POINT_H

#include <bit>
#include <cstdint>

namespace vq3900 {

constexpr std::uint32_t get_reg_field(std::uint32_t reg, std::uint32_t mask) {
  return mask == 0 ? 0 : (reg & mask) >> std::countr_zero(mask);
}

constexpr std::uint32_t set_reg_field(std::uint32_t field, std::uint32_t reg, std::uint32_t mask) {
  return mask == 0 ? reg : ((field << std::countr_zero(mask)) & mask) | (reg & ~mask);
}

// 0.5 - 2^-54, the number before one half: what is added before truncation rounds halves away from zero. With 0.5 itself
// the sum of the two would be rounded up to 1.
inline constexpr double kBelowHalf = 0.49999999999999994;

struct FixedFormat {
  std::uint32_t width = 0;     // N
  std::int32_t frac_bits = 0;  // F
  const char* name = nullptr;  // for the overflow message
};

// What the encoder found when a number did not fit.
struct FixedOverflow {
  double value;           // the number
  double scaled;          // value * 2^F
  std::uint64_t rounded;  // scaled, rounded; two's complement of N bits when negative
  std::uint64_t limit;    // 2^N - 1
  const char* name;
};

// Told of every overflow at the moment it happens.
using OverflowHandler = void (*)(const FixedOverflow&);

// What the encoder answers on overflow. A field of 32 ones looks the same; callers take it for an overflow.
inline constexpr std::uint32_t kOverflowed = 0xFFFFFFFF;

// The N-bit field, or kOverflowed after telling the handler. Widths and fraction bits count modulo 64.
std::uint32_t encode_fixed(double value, const FixedFormat& format, OverflowHandler on_overflow);

double decode_signed(std::uint32_t raw, std::uint32_t width, std::int32_t frac_bits);
double decode_unsigned(std::uint32_t raw, std::int32_t frac_bits);

// Marks where a single-precision number goes on in double precision.
constexpr double widen(float value) {
  return static_cast<double>(value);
}

// A real number stored in an integer field: truncated to 64 bits signed, of which the field takes the low ones. What
// has no such integer becomes 0.
constexpr std::int64_t to_integer(double value) {
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  return value >= -kLimit && value < kLimit ? static_cast<std::int64_t>(value) : 0;
}

}  // namespace vq3900

#endif
