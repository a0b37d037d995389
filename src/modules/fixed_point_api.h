// The overflow message, for every exported function that encodes.
#ifndef VQ3900_MODULES_FIXED_POINT_API_H
#define VQ3900_MODULES_FIXED_POINT_API_H

#include "modules/fixed_point.h"

namespace vq3900 {

// Prints the two lines of an overflow to standard output.
void print_overflow(const FixedOverflow& overflow);

}  // namespace vq3900

#endif
