// Numbers in test expectations: bits of floating-point numbers, seeded random ones, and the text of an overflow.
#ifndef VQ3900_TESTS_SUPPORT_NUMBERS_H
#define VQ3900_TESTS_SUPPORT_NUMBERS_H

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace vq3900::test {

inline constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();

inline std::uint64_t bits_of(double value) {
  return std::bit_cast<std::uint64_t>(value);
}

inline std::uint32_t bits_of(float value) {
  return std::bit_cast<std::uint32_t>(value);
}

// A raw field as N-bit two's complement with F fraction bits, and as an unsigned number.
inline double signed_number(std::uint32_t raw, unsigned width, int frac_bits) {
  const std::int64_t modulus = std::int64_t{1} << width;
  const std::int64_t value = raw;
  return std::ldexp(static_cast<double>(value >= modulus / 2 ? value - modulus : value), -frac_bits);
}

inline double unsigned_number(std::uint32_t raw, int frac_bits) {
  return std::ldexp(static_cast<double>(raw), -frac_bits);
}

// The same sequence for a seed everywhere.
class Random {
 public:
  explicit Random(std::uint32_t seed) : generator_(seed) {}

  std::uint32_t word() { return static_cast<std::uint32_t>(generator_()); }

  float between(float low, float high) {
    const double part = static_cast<double>(word()) / 4294967296.0;
    return static_cast<float>(static_cast<double>(low) + part * (static_cast<double>(high) - static_cast<double>(low)));
  }

 private:
  std::mt19937 generator_;
};

// The two lines of an overflow of a finite number.
inline std::string overflow_lines(double value, unsigned width, int frac_bits, const char* name) {
  const double scaled = std::ldexp(value, frac_bits);
  const std::uint64_t limit = (std::uint64_t{1} << width) - 1;
  const std::int64_t nearest = std::llround(scaled);
  const std::uint64_t rounded = static_cast<std::uint64_t>(nearest) + (scaled < 0 ? limit + 1 : 0);
  char text[1024];
  std::snprintf(text,
                sizeof text,
                "current lut value: %.20f; dingdianhua value: %.20f; m_fp: %llu; return value: %llu; max value: %llu "
                "\nerror code 01: value overflow in %s \n",
                value,
                scaled,
                static_cast<unsigned long long>(rounded),
                static_cast<unsigned long long>(rounded & limit),
                static_cast<unsigned long long>(limit),
                name);
  return text;
}

}  // namespace vq3900::test

#endif
