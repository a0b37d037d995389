// Looking into the LUT file of a calibration: the directory, and the grids that it names.
#ifndef VQ3900_TOOLS_LUT_FILE_READER_H
#define VQ3900_TOOLS_LUT_FILE_READER_H

#include <optional>

#include "image_reader.h"

namespace vq3900::tool {

// The LUT file, or nothing when neither of its two sections has its tag.
std::optional<Image> read_lut_file(Bytes bytes);

}  // namespace vq3900::tool

#endif
