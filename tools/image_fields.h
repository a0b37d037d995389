// The fields of a structure in a file, as its layout names them: values for people and for programs.
#ifndef VQ3900_TOOLS_IMAGE_FIELDS_H
#define VQ3900_TOOLS_IMAGE_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "bytes/layout.h"
#include "image_reader.h"

namespace vq3900::tool {

template <typename Record>
std::vector<FieldLayout> layouts_of(std::span<const LayoutRow<Record>> rows) {
  return {rows.begin(), rows.end()};
}

// Takes the fields of the structure at that offset out of the file: numbers and texts as fields, register tables apart.
ImageItem read_item(std::string name, std::span<const FieldLayout> layout, Bytes file, std::size_t offset);

// A part of a file of which a few words are said instead of its numbers.
ImageField summary_field(std::string name, Bytes file, std::size_t offset, std::size_t size, const std::string& text);

// "20 bytes, all 0x00", or with the digest that tells them apart.
std::string bytes_summary(Bytes bytes);

std::string hex_text(Bytes bytes);

std::uint32_t word_at(Bytes bytes, std::size_t offset);

}  // namespace vq3900::tool

#endif
