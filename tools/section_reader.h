// A section of a calibration file: its header, and behind it the records without gaps.
#ifndef VQ3900_TOOLS_SECTION_READER_H
#define VQ3900_TOOLS_SECTION_READER_H

#include <cstdint>
#include <vector>

#include "flash/calib_image.h"
#include "image_reader.h"

namespace vq3900::tool {

struct RecordKind {
  CalibSection section;
  std::vector<FieldLayout> layout;
  std::uint32_t key_size = 0;  // behind the digest, which covers it; 0: the records have no digest
};

// The header's fields with the checks of what they say of their kind. The file holds at least the header.
ImageSection read_header(const CalibSection& kind, Bytes file);

// Header, records and all checks of a section that reaches over its whole room.
ImageSection read_records(const RecordKind& kind, Bytes file);

ImageCheck length_check(const SectionHeader& header, std::uint64_t expected);

// Of the header's length; a length that does not fit the room is a fault.
ImageCheck section_crc_check(const SectionHeader& header, Bytes room);

}  // namespace vq3900::tool

#endif
