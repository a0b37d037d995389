// One row of a displacement grid, as fast as the processor allows.
#ifndef VQ3900_CALIB_DISTORTION_LUT_DISPLACEMENT_ROW_H
#define VQ3900_CALIB_DISTORTION_LUT_DISPLACEMENT_ROW_H

#include <span>

#include "calib/distortion_model.h"
#include "platform/cpu.h"

namespace vq3900 {

// Displacements of the points (x, y) of one y: no more than kMostSamples, and a multiple of 4. The same bits as point
// by point. True: every one of them encodes. False: some may not.
using SampleRowFunction = bool(const DistortionModel& model, std::span<const double> x, double y, double* dx,
                               double* dy);

SampleRowFunction sample_row;  // the fastest of those below

// The implementations, the fastest first. The last is the portable one, which is always supported.
std::span<const CodePath<SampleRowFunction>> sample_row_paths();

SampleRowFunction sample_row_portable;

#if defined(VQ3900_X86_64_WIDE)
SampleRowFunction sample_row_avx2;
#endif

}  // namespace vq3900

#endif
