// A picture of what a calibration leads to: rectified borders of both cameras, rows across both views, and the
// displacements that undo the distortion.
#ifndef VQ3900_TOOLS_CALIB_CALIB_PLOT_H
#define VQ3900_TOOLS_CALIB_CALIB_PLOT_H

#include <string>
#include <vector>

#include "calib/calib_run.h"
#include "calib/svg_writer.h"

namespace vq3900::tool {

// The whole picture as an SVG text; the title names the calibration.
std::string calibration_plot(const std::string& name, const CalibrationRun& run);

// --- its two halves

// A part of a picture in pixels of an image: as large as fits, both directions to the same scale.
class PlotPanel {
 public:
  PlotPanel(Point corner, double width, double most_height, const Box& extent);

  const Box& box() const { return box_; }
  double scale() const { return scale_; }
  Point place(Point pixel) const;
  Box place(const Box& pixels) const;

 private:
  Box extent_;
  double scale_;
  Box box_;
};

// Displacements of a camera in pixels, from a LUT or straight from the lens model.
struct DisplacementSample {
  Point at;
  Point by;
  bool inside = false;  // of the image
};
struct DisplacementField {
  std::string title;
  std::string source;  // of the numbers: "LUT of 60x40 samples, every 16 pixels"
  Box image;
  Box extent;                             // of the samples
  std::vector<DisplacementSample> shown;  // some of them, evenly spread
  double largest = 0;                     // inside the image, of all samples, in pixels
  double spacing = 1;                     // of the shown ones
};
DisplacementField displacement_field(const CalibrationRun& run, bool left);

// Draws two fields side by side below a line and answers the height used.
double draw_displacements(SvgWriter& svg, Point corner, double width, double gap, const CalibrationRun& run);

}  // namespace vq3900::tool

#endif
