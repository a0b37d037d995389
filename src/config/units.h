// The depth unit of the configuration as the device stores it.
#ifndef VQ3900_CONFIG_UNITS_H
#define VQ3900_CONFIG_UNITS_H

#include <cmath>
#include <cstdint>

#include "modules/fixed_point.h"

namespace vq3900 {

// The unit in hundredths: 0 for a unit that counts as none, else the single-precision product rounded half away from
// zero.
inline std::uint32_t hundredfold(float unit) {
  if (std::fabs(widen(unit)) < 0.00001) return 0;
  const float hundredths = unit * 100.0F;
  return static_cast<std::uint32_t>(to_integer(std::round(widen(hundredths))));
}

}  // namespace vq3900

#endif
