// The message is padded with a one bit, zeros, and its length in bits as a 64-bit number, to a multiple of 64 bytes.
// Each block of 16 words stirs the four chaining words in 64 steps of the form
//     a = b + rotl(a + f(b, c, d) + word[k] + sine[i], s)
// with a different f, order of words and amounts of rotation in each of the four rounds. Every step waits for the one
// before it, so its time is the length of that chain: the forms of f below keep what depends on the newest word last.
#include "bytes/md5.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "bytes/little_endian.h"

namespace vq3900 {

namespace {

// floor(2^32 * |sin(i + 1)|)
constexpr std::array<std::uint32_t, 64> kSine{
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};

constexpr std::array<std::array<int, 4>, 4> kRotation{
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

// Which word of the block a step takes.
constexpr std::size_t word_index(std::size_t step) {
  switch (step / 16) {
    case 0:
      return step % 16;
    case 1:
      return (5 * step + 1) % 16;
    case 2:
      return (3 * step + 5) % 16;
    default:
      return (7 * step) % 16;
  }
}

template <std::size_t Step>
inline void stir(std::array<std::uint32_t, 4>& v, const std::array<std::uint32_t, 16>& words) {
  constexpr std::size_t kRound = Step / 16;
  std::uint32_t& a = v[(64 - Step) % 4];
  const std::uint32_t b = v[(65 - Step) % 4];
  const std::uint32_t c = v[(66 - Step) % 4];
  const std::uint32_t d = v[(67 - Step) % 4];
  std::uint32_t sum = a + words[word_index(Step)] + kSine[Step];
  if constexpr (kRound == 0) sum += d ^ (b & (c ^ d));
  if constexpr (kRound == 1) sum += (c & ~d) + (b & d);  // the two parts share no bit: a sum serves as well as an or
  if constexpr (kRound == 2) sum += b ^ (c ^ d);
  if constexpr (kRound == 3) sum += c ^ (b | ~d);
  a = b + std::rotl(sum, kRotation[kRound][Step % 4]);
}

template <std::size_t... Steps>
inline void stir_all(std::array<std::uint32_t, 4>& v, const std::array<std::uint32_t, 16>& words,
                     std::index_sequence<Steps...>) {
  (stir<Steps>(v, words), ...);
}

void take_blocks(std::array<std::uint32_t, 4>& chain, const std::uint8_t* blocks, std::size_t count) {
  for (; count > 0; --count, blocks += 64) {
    std::array<std::uint32_t, 16> words;
    for (std::size_t i = 0; i < words.size(); ++i)
      words[i] = load_little<std::uint32_t>(blocks + 4 * i);
    std::array<std::uint32_t, 4> v = chain;
    stir_all(v, words, std::make_index_sequence<64>{});
    for (std::size_t i = 0; i < v.size(); ++i)
      chain[i] += v[i];
  }
}

}  // namespace

void Md5::update(std::span<const std::uint8_t> bytes) {
  const std::size_t held = length_ % kBlock;
  length_ += bytes.size();
  if (held > 0) {
    const std::size_t taken = std::min(kBlock - held, bytes.size());
    std::copy_n(bytes.begin(), taken, pending_.begin() + static_cast<std::ptrdiff_t>(held));
    bytes = bytes.subspan(taken);
    if (held + taken < kBlock) return;
    take_blocks(chain_, pending_.data(), 1);
  }
  take_blocks(chain_, bytes.data(), bytes.size() / kBlock);
  const auto rest = bytes.last(bytes.size() % kBlock);
  std::copy(rest.begin(), rest.end(), pending_.begin());
}

Md5Digest Md5::finish() {
  std::size_t held = length_ % kBlock;
  pending_[held++] = 0x80;
  if (held > kBlock - 8) {
    std::fill(pending_.begin() + static_cast<std::ptrdiff_t>(held), pending_.end(), std::uint8_t{0});
    take_blocks(chain_, pending_.data(), 1);
    held = 0;
  }
  std::fill(pending_.begin() + static_cast<std::ptrdiff_t>(held), pending_.end() - 8, std::uint8_t{0});
  store_little(length_ * 8, &pending_[kBlock - 8]);
  take_blocks(chain_, pending_.data(), 1);

  Md5Digest digest;
  for (std::size_t i = 0; i < chain_.size(); ++i)
    store_little(chain_[i], &digest[4 * i]);
  return digest;
}

Md5Digest md5(std::span<const std::uint8_t> bytes) {
  Md5 md5;
  md5.update(bytes);
  return md5.finish();
}

}  // namespace vq3900
