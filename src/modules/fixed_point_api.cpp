#include "modules/fixed_point_api.h"

#include "vq3900_depth_engine.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>

#include "platform/diagnostics.h"

namespace vq3900 {

namespace {

// What "%.20lf" prints in the "C" locale, on every system and whatever the host has set.
class FixedText {
 public:
  explicit FixedText(double value) {
    const auto [end, error] =
        std::to_chars(text_.data(), text_.data() + text_.size() - 1, value, std::chars_format::fixed, 20);
    *end = '\0';
  }
  const char* c_str() const { return text_.data(); }

 private:
  std::array<char, 352> text_{};  // sign, 309 digits, point, 20 digits, zero
};

class DecimalText {
 public:
  explicit DecimalText(std::uint64_t value) {
    *std::to_chars(text_.data(), text_.data() + text_.size() - 1, value).ptr = '\0';
  }
  const char* c_str() const { return text_.data(); }

 private:
  std::array<char, 24> text_{};
};

}  // namespace

void print_overflow(const FixedOverflow& overflow) {
  const auto result = static_cast<std::uint32_t>(overflow.rounded & overflow.limit);
  // "dingdianhua value" is the scaled number.
  print_out("current lut value: %s; dingdianhua value: %s; m_fp: %s; return value: %s; max value: %s \n",
            FixedText(overflow.value).c_str(),
            FixedText(overflow.scaled).c_str(),
            DecimalText(overflow.rounded).c_str(),
            DecimalText(result).c_str(),
            DecimalText(overflow.limit).c_str());
  print_out("error code 01: value overflow in %s \n", printable(overflow.name));
}

}  // namespace vq3900

uint32_t de_get_reg_field(uint32_t reg, uint32_t mask) {
  return vq3900::get_reg_field(reg, mask);
}

uint32_t de_set_reg_field(uint32_t field, uint32_t reg, uint32_t mask) {
  return vq3900::set_reg_field(field, reg, mask);
}

uint32_t de_float_to_fixed(double value, uint32_t width, int32_t frac_bits, const char* field_name) {
  return vq3900::encode_fixed(value, {width, frac_bits, field_name}, vq3900::print_overflow);
}

void de_fixed_to_float(uint32_t raw, uint32_t width, int32_t frac_bits, double* out) {
  if (out != nullptr) *out = vq3900::decode_signed(raw, width, frac_bits);
}

void de_fixed_to_float_sign(uint32_t raw, bool is_signed, uint32_t width, int32_t frac_bits, double* out) {
  if (out == nullptr) return;
  *out = is_signed ? vq3900::decode_signed(raw, width, frac_bits) : vq3900::decode_unsigned(raw, frac_bits);
}
