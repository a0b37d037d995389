// The encoding of displacements in vectors; see lut_encoding.cpp. What has no integer of 32 bits, NaN too, becomes
// 0x80000000, which is no field either.
#include "modules/lut_encoding.h"

#if defined(VQ3900_X86_64)

#include <immintrin.h>

#define VQ3900_INLINE __attribute__((always_inline)) inline
#define VQ3900_AVX2 __attribute__((target("avx2")))

namespace vq3900 {

namespace {

constexpr int kFieldMask = kLutFieldMask;
constexpr std::uint32_t kRange = 0x01000000;
constexpr int kBeyond = -0x02000000;  // the bits that a rounded number in range has not, once the range is added

VQ3900_INLINE __m128i rounded_pair(const double* values) {
  const __m128d scaled = _mm_loadu_pd(values) * _mm_set1_pd(kLutScale);
  const __m128d sign = _mm_and_pd(scaled, _mm_set1_pd(-0.0));
  return _mm_cvttpd_epi32(scaled + _mm_or_pd(sign, _mm_set1_pd(kBelowHalf)));
}

VQ3900_INLINE __m128i rounded_row(const double* values) {
  return _mm_unpacklo_epi64(rounded_pair(values), rounded_pair(values + 2));
}

VQ3900_INLINE __m128i plus_range(__m128i rounded) {
  using Words = std::uint32_t __attribute__((vector_size(16)));
  return reinterpret_cast<__m128i>(reinterpret_cast<Words>(rounded) + kRange);
}

VQ3900_INLINE void store_row(std::uint32_t* words, __m128i rounded) {
  void* const to = words;
  _mm_storeu_si128(static_cast<__m128i*>(to), _mm_and_si128(rounded, _mm_set1_epi32(kFieldMask)));
}

}  // namespace

std::size_t encode_tiles_sse2(const double* rows, std::size_t stride, std::size_t tiles, std::uint32_t* words) {
  for (std::size_t tile = 0; tile < tiles; ++tile, rows += kLutTile, words += kLutTileWords) {
    const __m128i a = rounded_row(rows);
    const __m128i b = rounded_row(rows + stride);
    const __m128i c = rounded_row(rows + 2 * stride);
    const __m128i d = rounded_row(rows + 3 * stride);
    const __m128i reached =
        _mm_or_si128(_mm_or_si128(plus_range(a), plus_range(b)), _mm_or_si128(plus_range(c), plus_range(d)));
    const __m128i beyond = _mm_and_si128(reached, _mm_set1_epi32(kBeyond));
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(beyond, _mm_setzero_si128())) != 0xFFFF) return tile;
    store_row(words, a);
    store_row(words + 4, b);
    store_row(words + 8, c);
    store_row(words + 12, d);
  }
  return tiles;
}

#if defined(VQ3900_X86_64_WIDE)

namespace {

VQ3900_AVX2 VQ3900_INLINE __m128i rounded_row_avx2(const double* values) {
  const __m256d scaled = _mm256_loadu_pd(values) * _mm256_set1_pd(kLutScale);
  const __m256d half = _mm256_blendv_pd(_mm256_set1_pd(kBelowHalf), _mm256_set1_pd(-kBelowHalf), scaled);
  return _mm256_cvttpd_epi32(scaled + half);
}

VQ3900_AVX2 VQ3900_INLINE __m256i rounded_rows_avx2(const double* values, std::size_t stride) {
  return _mm256_inserti128_si256(
      _mm256_castsi128_si256(rounded_row_avx2(values)), rounded_row_avx2(values + stride), 1);
}

VQ3900_AVX2 VQ3900_INLINE __m256i plus_range_avx2(__m256i rounded) {
  using Words = std::uint32_t __attribute__((vector_size(32)));
  return reinterpret_cast<__m256i>(reinterpret_cast<Words>(rounded) + kRange);
}

VQ3900_AVX2 VQ3900_INLINE void store_rows_avx2(std::uint32_t* words, __m256i rounded) {
  void* const to = words;
  _mm256_storeu_si256(static_cast<__m256i*>(to), _mm256_and_si256(rounded, _mm256_set1_epi32(kFieldMask)));
}

}  // namespace

VQ3900_AVX2 std::size_t encode_tiles_avx2(const double* rows, std::size_t stride, std::size_t tiles,
                                          std::uint32_t* words) {
  for (std::size_t tile = 0; tile < tiles; ++tile, rows += kLutTile, words += kLutTileWords) {
    const __m256i upper = rounded_rows_avx2(rows, stride);
    const __m256i lower = rounded_rows_avx2(rows + 2 * stride, stride);
    const __m256i reached = _mm256_or_si256(plus_range_avx2(upper), plus_range_avx2(lower));
    if (_mm256_testz_si256(reached, _mm256_set1_epi32(kBeyond)) == 0) return tile;
    store_rows_avx2(words, upper);
    store_rows_avx2(words + 8, lower);
  }
  return tiles;
}

#endif

}  // namespace vq3900

#endif
