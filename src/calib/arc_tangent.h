// The arc tangent of a distance from the optical axis. The C libraries' own differ in the last bit from system to
// system, and with it could the images built there; this one has the same bits everywhere, and the compiler can turn
// loops of it into vectors. It is less than one unit in the last place off.
//
//   atan r = atan c + atan t,   t = (r - c) / (1 + r c)
//
// with a c of 0, 1/2, 1, 3/2 or infinity that leaves a t of at most 7/16. There
//
//   atan t = t - t z P(z),   z = t^2
//
// with the P of degree 10 that keeps the greatest relative error of atan t smallest: 5.4e-18, rounded to doubles.
#ifndef VQ3900_CALIB_ARC_TANGENT_H
#define VQ3900_CALIB_ARC_TANGENT_H

namespace vq3900 {

// Of 0 and above, infinity included. NaN gives NaN.
inline double arc_tangent(double r) {
  const bool from_half = r >= 0.4375;
  const bool from_one = r >= 0.6875;
  const bool from_three_halves = r >= 1.1875;
  const bool from_infinity = r >= 2.4375;

  double c = from_half ? 0.5 : 0.0;
  c = from_one ? 1.0 : c;
  c = from_three_halves ? 1.5 : c;
  // Its arc tangent, and what that double is short of.
  double angle = from_half ? 0.4636476090008061 : 0.0;
  angle = from_one ? 0.7853981633974483 : angle;
  angle = from_three_halves ? 0.982793723247329 : angle;
  angle = from_infinity ? 1.5707963267948966 : angle;
  double rest = from_half ? 2.2698777452961687e-17 : 0.0;
  rest = from_one ? 3.061616997868383e-17 : rest;
  rest = from_three_halves ? 1.3903311031230998e-17 : rest;
  rest = from_infinity ? 6.123233995736766e-17 : rest;

  const double above = r - c;
  const double below = 1.0 + r * c;
  const double t = (from_infinity ? -1.0 : above) / (from_infinity ? r : below);
  const double z = t * t;
  const double zz = z * z;
  // Even and odd powers by themselves: two short chains.
  const double even = 0.3333333333333292 +
                      zz * (0.14285714272262023 +
                            zz * (0.09090886876148242 +
                                  zz * (0.0666103421543399 + zz * (0.04975917466190704 + zz * 0.016265603604863475))));
  const double odd = -0.19999999999873677 +
                     zz * (-0.11111110395086399 +
                           zz * (-0.07691872249826762 + zz * (-0.05833324591249955 + zz * -0.03651035947985726)));
  const double bent = t * (z * (even + z * odd));
  return angle - ((bent - rest) - t);
}

}  // namespace vq3900

#endif
