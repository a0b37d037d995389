// The calendar time of image time stamps.
#ifndef VQ3900_PLATFORM_CLOCK_H
#define VQ3900_PLATFORM_CLOCK_H

#include <cstdint>

namespace vq3900 {

// Seconds since 1970-01-01 UTC.
std::int64_t calendar_time();

}  // namespace vq3900

#endif
