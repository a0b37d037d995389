#include "config/c_locale.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace vq3900 {

namespace {

std::size_t skip_space(std::string_view text) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_space) - text.begin());
}

bool starts_with_no_case(std::string_view text, std::string_view upper) {
  return text.size() >= upper.size() &&
         std::equal(upper.begin(), upper.end(), text.begin(), [](char u, char c) { return u == to_upper(c); });
}

// The value of a digit in any base, 36 for what is none.
unsigned digit_value(char c) {
  const char upper = to_upper(c);
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (upper >= 'A' && upper <= 'Z') return static_cast<unsigned>(upper - 'A') + 10;
  return 36;
}

struct Sign {
  bool negative;
  std::size_t length;
};

Sign read_sign(std::string_view text) {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return {false, 0};
  return {text.front() == '-', 1};
}

struct Magnitude {
  std::uint64_t value = 0;
  std::size_t end = 0;  // index behind the last digit, 0: no number
  bool negative = false;
  bool overflow = false;
};

Magnitude read_magnitude(std::string_view text) {
  Magnitude result;
  std::size_t at = skip_space(text);
  const Sign sign = read_sign(text.substr(at));
  result.negative = sign.negative;
  at += sign.length;

  unsigned base = 10;
  if (at < text.size() && text[at] == '0') {
    const bool hexadecimal = at + 2 < text.size() && to_upper(text[at + 1]) == 'X' && digit_value(text[at + 2]) < 16;
    base = hexadecimal ? 16 : 8;
    if (hexadecimal) at += 2;
  }
  for (; at < text.size() && digit_value(text[at]) < base; ++at) {
    const std::uint64_t digit = digit_value(text[at]);
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
    if (result.value > (kMax - digit) / base) {
      result.overflow = true;
    } else {
      result.value = result.value * base + digit;
    }
    result.end = at + 1;
  }
  return result;
}

// Whether a number that its type cannot hold is too large rather than too small: the power of the base at its first
// significant digit decides.
bool is_too_large(std::string_view number, bool hexadecimal) {
  const char exponent_mark = hexadecimal ? 'P' : 'E';
  std::int64_t power = 0;  // of the digit before the point, counted from the first significant one
  bool significant = false;
  bool behind_point = false;
  std::size_t at = 0;
  for (; at < number.size() && to_upper(number[at]) != exponent_mark; ++at) {
    if (number[at] == '.') {
      behind_point = true;
      continue;
    }
    significant = significant || number[at] != '0';
    if (significant && !behind_point) ++power;
    if (!significant && behind_point) --power;
  }
  if (hexadecimal) power *= 4;
  if (at == number.size()) return power > 0;

  std::int64_t exponent = 0;
  const std::string_view digits = number.substr(at + 1);
  const Sign sign = read_sign(digits);
  for (const char c : digits.substr(sign.length))
    exponent = std::min<std::int64_t>(exponent * 10 + (c - '0'), 1 << 30);
  return power + (sign.negative ? -exponent : exponent) > 0;
}

template <typename Real>
Converted<Real> to_real(std::string_view text) {
  std::size_t at = skip_space(text);
  const Sign sign = read_sign(text.substr(at));
  at += sign.length;
  const auto signed_result = [&](Real magnitude, std::size_t length, bool out_of_range = false) {
    return Converted<Real>{sign.negative ? -magnitude : magnitude, at + length, out_of_range};
  };

  const std::string_view rest = text.substr(at);
  constexpr Real kInfinity = std::numeric_limits<Real>::infinity();
  if (starts_with_no_case(rest, "INFINITY")) return signed_result(kInfinity, 8);
  if (starts_with_no_case(rest, "INF")) return signed_result(kInfinity, 3);
  if (starts_with_no_case(rest, "NAN")) {
    const auto close = std::find_if_not(rest.begin() + std::min<std::ptrdiff_t>(4, std::ssize(rest)),
                                        rest.end(),
                                        [](char c) { return c == '_' || digit_value(c) < 36; });
    const bool payload = rest.size() > 3 && rest[3] == '(' && close != rest.end() && *close == ')';
    const auto length = payload ? static_cast<std::size_t>(close - rest.begin()) + 1 : 3;
    return signed_result(std::numeric_limits<Real>::quiet_NaN(), length);
  }
  if (read_sign(rest).length != 0) return {};

  const auto is_hex = [](std::string_view digits) {
    if (!digits.empty() && digits.front() == '.') digits.remove_prefix(1);
    return !digits.empty() && digit_value(digits.front()) < 16;
  };
  const bool hexadecimal = starts_with_no_case(rest, "0X") && is_hex(rest.substr(2));
  const std::string_view number = hexadecimal ? rest.substr(2) : rest;
  Real value = 0;
  const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value, format);
  if (error == std::errc::invalid_argument) return {};

  const auto length = static_cast<std::size_t>(end - number.data());
  const std::size_t used = length + (hexadecimal ? 2 : 0);
  if (error == std::errc{}) return signed_result(value, used);
  const bool too_large = is_too_large(number.substr(0, length), hexadecimal);
  return signed_result(too_large ? kInfinity : Real{0}, used, too_large);
}

}  // namespace

std::string_view trim(std::string_view text) {
  while (!text.empty() && is_space(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && is_space(text.back()))
    text.remove_suffix(1);
  return text;
}

Converted<std::int64_t> to_int64(std::string_view text) {
  using Limits = std::numeric_limits<std::int64_t>;
  const Magnitude magnitude = read_magnitude(text);
  const std::uint64_t limit = std::uint64_t{1} << 63;  // of a negative number; a positive one ends one below
  if (magnitude.overflow || magnitude.value > limit - (magnitude.negative ? 0 : 1)) {
    return {magnitude.negative ? Limits::min() : Limits::max(), magnitude.end, true};
  }
  const std::uint64_t pattern = magnitude.negative ? 0 - magnitude.value : magnitude.value;
  return {static_cast<std::int64_t>(pattern), magnitude.end, false};
}

Converted<std::uint64_t> to_uint64(std::string_view text) {
  const Magnitude magnitude = read_magnitude(text);
  if (magnitude.overflow) return {std::numeric_limits<std::uint64_t>::max(), magnitude.end, true};
  return {magnitude.negative ? 0 - magnitude.value : magnitude.value, magnitude.end, false};
}

Converted<float> to_float(std::string_view text) {
  return to_real<float>(text);
}

Converted<double> to_double(std::string_view text) {
  return to_real<double>(text);
}

std::string fixed_text(float value) {
  std::array<char, 64> text{};  // sign, 39 digits, point, 6 digits
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), static_cast<double>(value), std::chars_format::fixed, 6);
  return {text.data(), end};
}

}  // namespace vq3900
