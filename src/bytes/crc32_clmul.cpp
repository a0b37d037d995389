// CRC-32 by carry-less multiplication, in registers of 128 and of 512 bits; the latter are four of the former side by
// side. crc32_fold.h has the mathematics.
//
// Every instruction is of the VEX or EVEX kind (that is what the target avx is for): a legacy one would wait for the
// upper halves of the vector registers. A multiplication takes several cycles; four and more registers fill them.
#include "bytes/crc32_paths.h"

#if defined(VQ3900_X86_64)

#include <immintrin.h>

#include <array>

#include "bytes/crc32_fold.h"

#define VQ3900_CLMUL __attribute__((target("pclmul,avx")))
#define VQ3900_CLMUL_INLINE VQ3900_CLMUL __attribute__((always_inline)) inline
#define VQ3900_CLMUL512 __attribute__((target("pclmul,avx,vpclmulqdq,avx512f,avx512bw")))
#define VQ3900_CLMUL512_INLINE VQ3900_CLMUL512 __attribute__((always_inline)) inline

namespace vq3900 {

namespace {

constexpr std::size_t kWidth = 16;  // bytes of a register
constexpr auto kFolds = folds_up_to<64>();

VQ3900_CLMUL_INLINE __m128i load(const void* from) {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

// The register moved on to the bits that come next, and these.
VQ3900_CLMUL_INLINE __m128i fold(__m128i value, __m128i factors, __m128i next) {
  return _mm_xor_si128(_mm_xor_si128(_mm_clmulepi64_si128(value, factors, 0x00), next),
                       _mm_clmulepi64_si128(value, factors, 0x11));
}

// The remainder of what is in the register, followed by 32 zero bits. The low half, of which 64 + 32 bits are to
// follow, goes to its remainder of at most 32 bits times x^63 (and once more x), which leaves 96 bits; so do the first
// 32 of these. Of the 64 bits that are left the first half T is divided: floor(T floor(x^64 / P) / x^32) times P is
// what to take away.
VQ3900_CLMUL_INLINE std::uint32_t remainder_of(__m128i value) {
  constexpr FoldFactors kShorten{power_of_x(95), power_of_x(63)};
  constexpr FoldFactors kDivide{crc32_quotient(), crc32_divisor()};
  const __m128i shorten = load(&kShorten);
  const __m128i divide = load(&kDivide);
  const __m128i low_32 = _mm_cvtsi32_si128(-1);

  const __m128i of_96 =
      _mm_xor_si128(_mm_clmulepi64_si128(value, shorten, 0x00), _mm_slli_si128(_mm_srli_si128(value, 8), 4));
  const __m128i of_64 = _mm_srli_si128(_mm_xor_si128(_mm_clmulepi64_si128(of_96, shorten, 0x10), of_96), 8);
  const __m128i times = _mm_and_si128(_mm_clmulepi64_si128(_mm_and_si128(of_64, low_32), divide, 0x00), low_32);
  const __m128i taken = _mm_clmulepi64_si128(times, divide, 0x10);
  return static_cast<std::uint32_t>(_mm_extract_epi32(_mm_xor_si128(of_64, taken), 1));
}

// The last bytes of a message, fewer than a register takes: behind zero bytes.
VQ3900_CLMUL_INLINE __m128i last_bytes(const std::uint8_t* end, std::size_t count) {
  static constexpr std::array<std::uint8_t, 2 * kWidth> kKeep{
      0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  return _mm_and_si128(load(end - kWidth), load(&kKeep[count]));
}

}  // namespace

VQ3900_CLMUL std::uint32_t crc32_clmul(std::uint32_t initial, const std::uint8_t* data, std::size_t length) {
  if (length < kWidth) return crc32_portable(initial, data, length);
  __m128i value = _mm_xor_si128(load(data), _mm_cvtsi32_si128(static_cast<int>(~initial)));
  data += kWidth;
  length -= kWidth;
  if (length >= 3 * kWidth) {
    __m128i b = load(data);
    __m128i c = load(data + kWidth);
    __m128i d = load(data + 2 * kWidth);
    data += 3 * kWidth;
    length -= 3 * kWidth;
    const __m128i by_four = load(&kFolds[4 * kWidth]);
    for (; length >= 4 * kWidth; data += 4 * kWidth, length -= 4 * kWidth) {
      value = fold(value, by_four, load(data));
      b = fold(b, by_four, load(data + kWidth));
      c = fold(c, by_four, load(data + 2 * kWidth));
      d = fold(d, by_four, load(data + 3 * kWidth));
    }
    const __m128i by_two = load(&kFolds[2 * kWidth]);
    value = fold(fold(value, by_two, c), load(&kFolds[kWidth]), fold(b, by_two, d));
  }
  const __m128i by_one = load(&kFolds[kWidth]);
  for (; length >= kWidth; data += kWidth, length -= kWidth)
    value = fold(value, by_one, load(data));
  if (length > 0) value = fold(value, load(&kFolds[length]), last_bytes(data + length, length));
  return ~remainder_of(value);
}

#if defined(VQ3900_X86_64_WIDE)

namespace {

constexpr std::size_t kWidth512 = 64;

VQ3900_CLMUL512_INLINE __m512i load512(const void* from) {
  return _mm512_loadu_si512(from);
}

// The same factors for all four parts.
VQ3900_CLMUL512_INLINE __m512i spread(const FoldFactors& factors) {
  return _mm512_maskz_broadcast_i32x4(0xFFFF, load(&factors));
}

VQ3900_CLMUL512_INLINE __m512i fold512(__m512i value, __m512i factors, __m512i next) {
  constexpr int kSumOfThree = 0x96;
  return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(value, factors, 0x00),
                                   _mm512_clmulepi64_epi128(value, factors, 0x11),
                                   next,
                                   kSumOfThree);
}

struct FourRegisters {
  __m512i a, b, c, d;
};

VQ3900_CLMUL512_INLINE FourRegisters load_four(const std::uint8_t* data) {
  return {load512(data), load512(data + kWidth512), load512(data + 2 * kWidth512), load512(data + 3 * kWidth512)};
}

VQ3900_CLMUL512_INLINE FourRegisters fold_four(const FourRegisters& value, __m512i factors, const FourRegisters& next) {
  return {fold512(value.a, factors, next.a),
          fold512(value.b, factors, next.b),
          fold512(value.c, factors, next.c),
          fold512(value.d, factors, next.d)};
}

// The four parts of a register as one: each moved to the last.
VQ3900_CLMUL512_INLINE __m128i joined(__m512i value) {
  alignas(64) static constexpr FoldFactors kToLast[] = {
      fold_by(3 * kWidth), fold_by(2 * kWidth), fold_by(kWidth), {0, 0}};
  const __m512i moved = fold512(value, load512(kToLast), _mm512_maskz_mov_epi64(0xC0, value));
  const __m256i halves =
      _mm256_xor_si256(_mm512_maskz_extracti64x4_epi64(0xF, moved, 0), _mm512_maskz_extracti64x4_epi64(0xF, moved, 1));
  return _mm_xor_si128(_mm256_castsi256_si128(halves), _mm256_extractf128_si256(halves, 1));
}

}  // namespace

VQ3900_CLMUL512 std::uint32_t crc32_clmul512(std::uint32_t initial, const std::uint8_t* data, std::size_t length) {
  if (length < kWidth512) return crc32_clmul(initial, data, length);
  const __m512i start = _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(~initial)));
  __m512i value = _mm512_xor_si512(load512(data), start);
  constexpr std::size_t kEight = 8 * kWidth512;
  if (length >= kEight) {
    static constexpr FoldFactors kByEight = fold_by(kEight);
    static constexpr FoldFactors kByFour = fold_by(kEight / 2);
    static constexpr FoldFactors kByTwo = fold_by(kEight / 4);
    FourRegisters first = load_four(data);
    first.a = value;
    FourRegisters second = load_four(data + kEight / 2);
    const __m512i by_eight = spread(kByEight);
    for (data += kEight, length -= kEight; length >= kEight; data += kEight, length -= kEight) {
      first = fold_four(first, by_eight, load_four(data));
      second = fold_four(second, by_eight, load_four(data + kEight / 2));
    }
    first = fold_four(first, spread(kByFour), second);
    const __m512i by_two = spread(kByTwo);
    value = fold512(fold512(first.a, by_two, first.c), spread(kFolds[kWidth512]), fold512(first.b, by_two, first.d));
  } else {
    data += kWidth512;
    length -= kWidth512;
  }
  const __m512i by_one = spread(kFolds[kWidth512]);
  for (; length >= kWidth512; data += kWidth512, length -= kWidth512)
    value = fold512(value, by_one, load512(data));
  if (length > 0) {
    const __mmask64 last = ~std::uint64_t{0} << (kWidth512 - length);
    value = fold512(value, spread(kFolds[length]), _mm512_maskz_loadu_epi8(last, data + length - kWidth512));
  }
  return ~remainder_of(joined(value));
}

#endif

}  // namespace vq3900

#endif
