#include "modules/fixed_point.h"

#include <cmath>
#include <limits>

namespace vq3900 {

namespace {

// Conversion to an unsigned 64-bit integer for every double: negative numbers wrap, what is out of reach ends at a
// value that no field can hold.
std::uint64_t wrap_to_u64(double value) {
  constexpr double kTwo63 = 9223372036854775808.0;
  constexpr double kTwo64 = 18446744073709551616.0;
  if (value >= kTwo64) return std::numeric_limits<std::uint64_t>::max();
  if (value >= kTwo63) return static_cast<std::uint64_t>(value);
  if (value >= -kTwo63) return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
  return std::uint64_t{1} << 63;  // below -2^63, and NaN
}

// The nearest integer, halves away from zero. The round() of one C library takes the number before 0.5 up to 1.
double round_half_away(double value) {
  return std::trunc(value + std::copysign(kBelowHalf, value));
}

}  // namespace

std::uint32_t encode_fixed(double value, const FixedFormat& format, OverflowHandler on_overflow) {
  const std::uint64_t modulus = std::uint64_t{1} << (format.width % 64);
  const std::uint64_t limit = modulus - 1;
  const auto scale = static_cast<double>(std::uint64_t{1} << (static_cast<std::uint32_t>(format.frac_bits) % 64));
  const double scaled = value * scale;
  const double nearest = round_half_away(scaled);
  const double pattern = scaled < 0 ? nearest + static_cast<double>(modulus) : nearest;
  const std::uint64_t rounded = wrap_to_u64(pattern);

  // Deliberately blind to the sign: a signed field takes positive numbers up to 2^N - 1 and negative ones down to -2^N.
  const bool small = std::fabs(scaled) < 1.0;  // rounds to 0, or to 2^N, which is 0 in N bits; false for NaN
  if (!small && rounded > limit) {
    on_overflow({value, scaled, rounded, limit, format.name});
    return kOverflowed;
  }
  return static_cast<std::uint32_t>(rounded & limit);
}

double decode_signed(std::uint32_t raw, std::uint32_t width, std::int32_t frac_bits) {
  const std::uint32_t sign = std::uint32_t{1} << ((width - 1) % 32);
  const double scale = std::ldexp(1.0, frac_bits);
  if ((raw & sign) == 0) return raw / scale;  // bits above the field are not masked off
  const std::uint32_t low = (0U - raw) & (sign - 1);
  const double magnitude = low == 0 ? sign : low;  // no low bits: the most negative number
  return -magnitude / scale;
}

double decode_unsigned(std::uint32_t raw, std::int32_t frac_bits) {
  return raw / std::ldexp(1.0, frac_bits);
}

}  // namespace vq3900
