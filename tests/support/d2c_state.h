// The depth-to-colour block's record and matrix as they stand, taken through its interface.
#ifndef VQ3900_TESTS_SUPPORT_D2C_STATE_H
#define VQ3900_TESTS_SUPPORT_D2C_STATE_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>

namespace vq3900::test {

using Matrix = std::array<double, 12>;

inline D2cConfig config() {
  D2cConfig out;
  EXPECT_EQ(de_copy_d2c_config(&out), 0);
  return out;
}

inline Matrix matrix() {
  D2cConfig ignored;
  Matrix w{};
  EXPECT_EQ(get_d2c_params(&ignored, w.data()), 0);
  return w;
}

template <typename Change>
void change_config(Change change) {
  D2cConfig in = config();
  change(in);
  EXPECT_EQ(de_update_d2c_config(&in), 0);
}

}  // namespace vq3900::test

#endif
