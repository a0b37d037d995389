// The implementations of CRC-32, each by itself.
#ifndef VQ3900_BYTES_CRC32_PATHS_H
#define VQ3900_BYTES_CRC32_PATHS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/cpu.h"

namespace vq3900 {

using Crc32Function = std::uint32_t(std::uint32_t initial, const std::uint8_t* data, std::size_t length);

// The fastest first. The last is the portable one, which is always supported.
std::span<const CodePath<Crc32Function>> crc32_paths();

Crc32Function crc32_portable;

#if defined(VQ3900_X86_64)
Crc32Function crc32_clmul;
#endif
#if defined(VQ3900_X86_64_WIDE)
Crc32Function crc32_clmul512;
#endif

}  // namespace vq3900

#endif
