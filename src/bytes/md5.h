// MD5 message digests (RFC 1321).
#ifndef VQ3900_BYTES_MD5_H
#define VQ3900_BYTES_MD5_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vq3900 {

using Md5Digest = std::array<std::uint8_t, 16>;

// A digest over a message that comes in pieces.
class Md5 {
 public:
  void update(std::span<const std::uint8_t> bytes);
  Md5Digest finish();  // the object is used up

 private:
  static constexpr std::size_t kBlock = 64;

  std::array<std::uint32_t, 4> chain_{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  std::uint64_t length_ = 0;  // of the message so far, in bytes
  std::array<std::uint8_t, kBlock> pending_{};
};

Md5Digest md5(std::span<const std::uint8_t> bytes);

}  // namespace vq3900

#endif
