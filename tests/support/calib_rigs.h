// Two rigs from public data sets, in millimetres. Translations take a point of the left camera into the other one.
#ifndef VQ3900_TESTS_SUPPORT_CALIB_RIGS_H
#define VQ3900_TESTS_SUPPORT_CALIB_RIGS_H

#include "vq3900_depth_engine.h"

namespace vq3900::test {

// EuRoC MAV, VI-Sensor: two grey cameras 110 mm apart, no colour camera.
inline CalibrateParamsMulti euroc_rig() {
  CalibrateParamsMulti calib{};
  calib.left_ir = {752,
                   480,
                   458.654F,
                   457.296F,
                   367.215F,
                   248.375F,
                   {-0.28340811F, 0.07395907F, 0, 0, 0, 0, 0.00019359F, 1.76187114e-05F},
                   0};
  calib.right_ir = {752,
                    480,
                    457.587F,
                    456.134F,
                    379.999F,
                    255.238F,
                    {-0.28368365F, 0.07451284F, 0, 0, 0, 0, -0.00010473F, -3.55590700e-05F},
                    0};
  const float rotation[9] = {0.9999972564774497F,
                             0.0023120671924201593F,
                             0.00037600810235099286F,
                             -0.0023171357232846185F,
                             0.9998980485065276F,
                             0.01408983584669731F,
                             -0.000343393120588828F,
                             -0.014090668452670353F,
                             0.9999006626381794F};
  const float translation[3] = {-110.07380812713924F, 0.39912154701445685F, -0.8537025033513194F};
  for (int i = 0; i < 9; ++i) {
    calib.ir_rotation[i] = rotation[i];
    calib.rgb_rotation[i] = i % 4 == 0 ? 1.0F : 0.0F;
  }
  for (int i = 0; i < 3; ++i)
    calib.ir_translation[i] = translation[i];
  return calib;
}

// KITTI raw, 2011-09-26: the grey cameras 00 and 01, 537 mm apart, and the colour camera 02.
inline CalibrateParamsMulti kitti_rig() {
  CalibrateParamsMulti calib{};
  calib.left_ir = {1392,
                   512,
                   984.2439F,
                   980.8141F,
                   690.0F,
                   233.1966F,
                   {-0.3728755F, 0.2037299F, -0.07233722F, 0, 0, 0, 2.219027e-03F, 1.383707e-03F},
                   0};
  calib.right_ir = {1392,
                    512,
                    989.5267F,
                    987.8386F,
                    702.0F,
                    245.5590F,
                    {-0.3644661F, 0.1790019F, -0.05314062F, 0, 0, 0, 1.148107e-03F, -6.298563e-04F},
                    0};
  calib.rgb = {1392,
               512,
               959.7910F,
               956.9251F,
               696.0217F,
               224.1806F,
               {-0.3691481F, 0.1968681F, -0.06770705F, 0, 0, 0, 1.353473e-03F, 5.677587e-04F},
               0};
  const float rotation[9] = {0.9993513F,
                             0.01860866F,
                             -0.03083487F,
                             -0.01887662F,
                             0.9997863F,
                             -0.008421873F,
                             0.03067156F,
                             0.008998467F,
                             0.9994890F};
  const float rgb_rotation[9] = {0.9999758F,
                                 -0.005267463F,
                                 -0.004552439F,
                                 0.005251945F,
                                 0.9999804F,
                                 -0.003413835F,
                                 0.004570332F,
                                 0.003389843F,
                                 0.9999838F};
  const float translation[3] = {-537.0F, 4.822061F, -12.52488F};
  const float rgb_translation[3] = {59.56621F, 0.2900141F, 2.577209F};
  for (int i = 0; i < 9; ++i) {
    calib.ir_rotation[i] = rotation[i];
    calib.rgb_rotation[i] = rgb_rotation[i];
  }
  for (int i = 0; i < 3; ++i) {
    calib.ir_translation[i] = translation[i];
    calib.rgb_translation[i] = rgb_translation[i];
  }
  return calib;
}

}  // namespace vq3900::test

#endif
