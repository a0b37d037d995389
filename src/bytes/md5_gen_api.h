// The digest of an image record, with the trace that production lines watch.
#ifndef VQ3900_BYTES_MD5_GEN_API_H
#define VQ3900_BYTES_MD5_GEN_API_H

#include <cstdint>

namespace vq3900 {

// Writes the MD5 digest of the bytes to the 16 bytes at digest and prints ten trace lines to standard output. A null
// pointer or a length of 0: nothing is written and nothing printed.
void Md5_gen(const std::uint8_t* data, std::uint8_t* digest, std::uint32_t length);

}  // namespace vq3900

#endif
