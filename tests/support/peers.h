// Other implementations of MD5 and CRC-32 to hold the library's against. Where a system has none (a cross build, say)
// the library's own stand in: published values check those, and the other tests still see what is digested.
#ifndef VQ3900_TESTS_SUPPORT_PEERS_H
#define VQ3900_TESTS_SUPPORT_PEERS_H

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#ifdef VQ3900_HAVE_OPENSSL
#include <openssl/evp.h>
#else
#include "bytes/md5.h"
#endif
#ifdef VQ3900_HAVE_ZLIB
#include <zlib.h>
#else
#include "bytes/crc32.h"
#endif

namespace vq3900::test {

inline std::array<std::uint8_t, 16> peer_md5(std::span<const std::uint8_t> bytes) {
#ifdef VQ3900_HAVE_OPENSSL
  std::array<std::uint8_t, 16> digest{};
  EXPECT_EQ(EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_md5(), nullptr), 1);
  return digest;
#else
  return md5(bytes);
#endif
}

// Goes on from the checksum of what stands before the bytes; 0 at the start.
inline std::uint32_t peer_crc32(std::uint32_t initial, std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return initial;
#ifdef VQ3900_HAVE_ZLIB
  return static_cast<std::uint32_t>(::crc32_z(initial, bytes.data(), bytes.size()));
#else
  return vq3900::crc32(initial, bytes.data(), bytes.size());
#endif
}

}  // namespace vq3900::test

#endif
