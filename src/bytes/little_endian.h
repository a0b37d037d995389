// Numbers in files and flash images: little-endian on every machine.
#ifndef VQ3900_BYTES_LITTLE_ENDIAN_H
#define VQ3900_BYTES_LITTLE_ENDIAN_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace vq3900 {

namespace detail {

// The unsigned integer that carries a number's bits.
template <std::size_t Size>
struct BitsOfSize;
template <>
struct BitsOfSize<1> {
  using type = std::uint8_t;
};
template <>
struct BitsOfSize<2> {
  using type = std::uint16_t;
};
template <>
struct BitsOfSize<4> {
  using type = std::uint32_t;
};
template <>
struct BitsOfSize<8> {
  using type = std::uint64_t;
};

template <typename Bits>
constexpr Bits reverse_bytes(Bits bits) {
  Bits reversed = 0;
  for (std::size_t i = 0; i < sizeof(Bits); ++i) {
    reversed = static_cast<Bits>((static_cast<std::uint64_t>(reversed) << 8) | ((bits >> (8 * i)) & 0xFF));
  }
  return reversed;
}

template <typename Bits>
constexpr Bits little(Bits bits) {
  return std::endian::native == std::endian::little ? bits : reverse_bytes(bits);
}

}  // namespace detail

template <typename Number>
void store_little(Number number, std::uint8_t* to) {
  static_assert(std::is_arithmetic_v<Number>);
  const auto bits = detail::little(std::bit_cast<typename detail::BitsOfSize<sizeof(Number)>::type>(number));
  std::memcpy(to, &bits, sizeof bits);
}

// Words one behind the other.
inline void store_little_words(std::span<const std::uint32_t> words, std::uint8_t* to) {
  if constexpr (std::endian::native == std::endian::little) {
    if (!words.empty()) std::memcpy(to, words.data(), words.size_bytes());
  } else {
    for (std::size_t i = 0; i < words.size(); ++i)
      store_little(words[i], to + i * sizeof(std::uint32_t));
  }
}

template <typename Number>
Number load_little(const std::uint8_t* from) {
  static_assert(std::is_arithmetic_v<Number>);
  typename detail::BitsOfSize<sizeof(Number)>::type bits;
  std::memcpy(&bits, from, sizeof bits);
  return std::bit_cast<Number>(detail::little(bits));
}

}  // namespace vq3900

#endif
