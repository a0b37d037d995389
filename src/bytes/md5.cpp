// The message is padded with a one bit, zeros, and its length in bits as a 64-bit number, to a multiple of 64 bytes.
// Each block of 16 words stirs the four chaining words in 64 steps of the form
//     a = b + rotl(a + f(b, c, d) + word[k] + sine[i], s)
// with a different f, order of words and amounts of rotation in each of the four rounds. Every step waits for the b of
// the one before it, so the time of a block is the length of that chain: what depends on b comes last.
#include "bytes/md5.h"

#include <algorithm>
#include <bit>
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

// Keeps the compiler from adding in another order than the code says.
inline void complete(std::uint32_t& sum) {
  asm("" : "+r"(sum));
}

// The new value of the chaining word a.
template <std::size_t Step>
inline std::uint32_t stir(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                          const std::uint8_t* block) {
  constexpr std::size_t kRound = Step / 16;
  std::uint32_t sum = a + (load_little<std::uint32_t>(block + 4 * word_index(Step)) + kSine[Step]);
  if constexpr (kRound == 1) sum += c & ~d;
  complete(sum);
  if constexpr (kRound == 0) sum += d ^ (b & (c ^ d));
  if constexpr (kRound == 1) sum += b & d;  // shares no bit with the other part: a sum serves as well as an or
  if constexpr (kRound == 2) sum += b ^ (c ^ d);
  if constexpr (kRound == 3) sum += c ^ (b | ~d);
  return b + std::rotl(sum, kRotation[kRound][Step % 4]);
}

// Four steps, after which every chaining word is a new one.
template <std::size_t First>
inline void stir_four(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c, std::uint32_t& d,
                      const std::uint8_t* block) {
  a = stir<First>(a, b, c, d, block);
  d = stir<First + 1>(d, a, b, c, block);
  c = stir<First + 2>(c, d, a, b, block);
  b = stir<First + 3>(b, c, d, a, block);
}

template <std::size_t... Fours>
void take_blocks(Md5Chain& chain, const std::uint8_t* blocks, std::size_t count,
                 std::index_sequence<Fours...> /*fours*/) {
  auto [a, b, c, d] = chain;
  for (; count > 0; --count, blocks += kMd5Block) {
    const std::uint32_t before_a = a, before_b = b, before_c = c, before_d = d;
    (stir_four<4 * Fours>(a, b, c, d, blocks), ...);
    a += before_a;
    b += before_b;
    c += before_c;
    d += before_d;
  }
  chain = {a, b, c, d};
}

void take_blocks(Md5Chain& chain, const std::uint8_t* blocks, std::size_t count) {
  take_blocks(chain, blocks, count, std::make_index_sequence<16>{});
}

// Takes the bytes behind the last whole block, and the padding.
Md5Digest finish_with(Md5Chain& chain, std::span<const std::uint8_t> rest, std::uint64_t length) {
  std::array<std::uint8_t, kMd5Block> block{};
  std::ranges::copy(rest, block.begin());
  if (rest.size() < kMd5Block - 8) {
    store_little(std::uint32_t{0x80}, &block[rest.size()]);  // in one piece with the zeros: it is loaded by words
  } else {
    block[rest.size()] = 0x80;
    take_blocks(chain, block.data(), 1);
    block.fill(0);
  }
  store_little(length * 8, &block[kMd5Block - 8]);
  take_blocks(chain, block.data(), 1);

  Md5Digest digest;
  for (std::size_t i = 0; i < chain.size(); ++i)
    store_little(chain[i], &digest[4 * i]);
  return digest;
}

}  // namespace

void Md5::update(std::span<const std::uint8_t> bytes) {
  const std::size_t held = length_ % kMd5Block;
  length_ += bytes.size();
  if (held > 0) {
    const std::size_t taken = std::min(kMd5Block - held, bytes.size());
    std::copy_n(bytes.begin(), taken, pending_.begin() + static_cast<std::ptrdiff_t>(held));
    bytes = bytes.subspan(taken);
    if (held + taken < kMd5Block) return;
    take_blocks(chain_, pending_.data(), 1);
  }
  take_blocks(chain_, bytes.data(), bytes.size() / kMd5Block);
  const auto rest = bytes.last(bytes.size() % kMd5Block);
  std::copy(rest.begin(), rest.end(), pending_.begin());
}

Md5Digest Md5::finish() {
  return finish_with(chain_, std::span(pending_).first(length_ % kMd5Block), length_);
}

Md5Digest md5(std::span<const std::uint8_t> bytes) {
  Md5Chain chain = kMd5Start;
  take_blocks(chain, bytes.data(), bytes.size() / kMd5Block);
  return finish_with(chain, bytes.last(bytes.size() % kMd5Block), bytes.size());
}

}  // namespace vq3900
