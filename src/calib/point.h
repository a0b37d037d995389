// Points of the normalised image plane: pixel coordinates less the principal point, over the focal length.
#ifndef VQ3900_CALIB_POINT_H
#define VQ3900_CALIB_POINT_H

namespace vq3900 {

struct Point {
  double x = 0;
  double y = 0;
};

constexpr double squared_radius(Point p) {
  return p.x * p.x + p.y * p.y;
}

}  // namespace vq3900

#endif
