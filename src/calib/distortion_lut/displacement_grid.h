// Sampling a distortion model: the displacement of every grid point, in focal lengths.
#ifndef VQ3900_CALIB_DISTORTION_LUT_DISPLACEMENT_GRID_H
#define VQ3900_CALIB_DISTORTION_LUT_DISPLACEMENT_GRID_H

#include "calib/distortion_lut/lut_grid.h"
#include "calib/distortion_model.h"
#include "platform/raw_vector.h"

namespace vq3900 {

struct Pinhole {
  double fx;
  double fy;
  double cx;
  double cy;
};

struct ImageSide {
  int width;
  int height;
};

struct DisplacementGrid {
  RawVector<double> dx;  // row-major
  RawVector<double> dy;
};

// Samples the model. Displacements must encode to a signed number of 24 bits with 24 fraction bits: inside the image
// anything else ends the sampling; outside, where the model may not hold, such a sample takes the displacement of the
// nearest image position. False: a displacement out of range.
bool sample_displacements(const DistortionModel& model, const Pinhole& pinhole, const ImageSide& image,
                          const GridAxis& across, const GridAxis& down, DisplacementGrid& grid);

}  // namespace vq3900

#endif
