// Looking into the files of a calibration: the flash image, its D2D section alone, the LUT file, and both kinds of
// factory-align files.
#ifndef VQ3900_TOOLS_CALIB_IMAGE_READER_H
#define VQ3900_TOOLS_CALIB_IMAGE_READER_H

#include <optional>

#include "image_reader.h"

namespace vq3900::tool {

// What the bytes are, or nothing when their size and tags fit none of these files.
std::optional<Image> read_calib_image(Bytes bytes);

}  // namespace vq3900::tool

#endif
