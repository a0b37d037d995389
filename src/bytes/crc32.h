// CRC-32 of IEEE 802.3.
#ifndef VQ3900_BYTES_CRC32_H
#define VQ3900_BYTES_CRC32_H

#include <cstddef>
#include <cstdint>

namespace vq3900 {

// The CRC-32 of the bytes, continuing from that of the bytes before them, or from 0. No bytes leave it as it is.
std::uint32_t crc32(std::uint32_t initial, const std::uint8_t* data, std::size_t length);

}  // namespace vq3900

#endif
