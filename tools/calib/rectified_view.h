// A rectified camera as a map between its image and the rectified one, and checks that need no image.
#ifndef VQ3900_TOOLS_CALIB_RECTIFIED_VIEW_H
#define VQ3900_TOOLS_CALIB_RECTIFIED_VIEW_H

#include <optional>
#include <vector>

#include "calib/calib_run.h"
#include "calib/point.h"
#include "calib/stereo_rectification.h"

namespace vq3900::tool {

// Pixels of the camera's image are those after scaling and chopping.
struct RectifiedView {
  CameraView camera;
  Matrix3 rotation;
  DeCameraIntrinsic_S output{};

  // Where a pixel of the camera lands in the rectified image; nothing where the lens model does not reach.
  std::optional<Point> to_rectified(Point pixel) const;

  // Which place of the camera's image a rectified pixel shows; nothing for one behind the camera.
  std::optional<Point> to_image(Point rectified) const;
};

RectifiedView left_view(const CalibrationRun& run);
RectifiedView right_view(const CalibrationRun& run);

// A point of space in both rectified images.
struct MatchedPoint {
  Point left;
  Point right;
};

// Points behind a grid of pixels of the left rectified image, at a depth given in baselines, by way of the calibrated
// pose: were the rectification wrong, their rows would differ.
std::vector<MatchedPoint> matched_points(const CalibrationRun& run, int columns, int rows, double baselines);

struct RowCheck {
  double largest_difference = 0;  // pixels between the rows of a point in the two rectified images
  double rows_above = 0;          // how far above its own row an output pixel takes its value from, at most
  double rows_below = 0;          // and below
};
RowCheck check_rows(const CalibrationRun& run);

}  // namespace vq3900::tool

#endif
