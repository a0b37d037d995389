// MD5 message digests (RFC 1321).
#ifndef VQ3900_BYTES_MD5_H
#define VQ3900_BYTES_MD5_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vq3900 {

using Md5Digest = std::array<std::uint8_t, 16>;
using Md5Chain = std::array<std::uint32_t, 4>;

inline constexpr Md5Chain kMd5Start{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
inline constexpr std::size_t kMd5Block = 64;

// A digest over a message that comes in pieces.
class Md5 {
 public:
  void update(std::span<const std::uint8_t> bytes);
  Md5Digest finish();  // the object is used up

 private:
  Md5Chain chain_ = kMd5Start;
  std::uint64_t length_ = 0;  // of the message so far, in bytes
  std::array<std::uint8_t, kMd5Block> pending_{};
};

Md5Digest md5(std::span<const std::uint8_t> bytes);

}  // namespace vq3900

#endif
