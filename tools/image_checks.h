// What an image says of itself, held against what its bytes are.
#ifndef VQ3900_TOOLS_IMAGE_CHECKS_H
#define VQ3900_TOOLS_IMAGE_CHECKS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "image_reader.h"

namespace vq3900::tool {

// Of bytes that hold their own checksum at that offset, which counts as 0.
ImageCheck crc_check(Bytes covered, std::size_t crc_offset);

ImageCheck digest_check(const std::string& what, Bytes stored, Bytes covered);
ImageCheck equality_check(const std::string& what, std::uint64_t found, std::uint64_t expected);

// That a number of things has room.
ImageCheck count_check(std::uint64_t count, std::uint64_t most);

// That the register tables of an item whose block the library knows have the block's addresses and masks. Elements
// behind the block's are zero.
ImageCheck registers_check(const ImageItem& item);

// That every byte of the range that is in no header, field or table of the section is 0xFF.
ImageCheck unused_check(const ImageSection& section, Bytes file, std::size_t begin, std::size_t end);

bool is_unwritten(Bytes bytes);  // all 0xFF

// Calls back with offset and size of everything in a section that is known: header fields, fields and tables of items.
template <typename Visit>
void visit_known(const ImageSection& section, const Visit& visit) {
  for (const ImageField& field : section.header)
    visit(field.offset, field.bytes.size());
  for (const ImageItem& item : section.items) {
    for (const ImageField& field : item.fields)
      visit(field.offset, field.bytes.size());
    for (const ImageRegisters& registers : item.registers)
      visit(registers.offset, registers.elements.size() * sizeof(DeRegElement_S));
  }
}

}  // namespace vq3900::tool

#endif
