// Looking into the library's files: what an image holds, section by section, and whether its checks hold.
//
// The reader trusts nothing. Offsets, counts and sizes are checked before use; what does not fit becomes a failed
// check, never an access out of bounds.
#ifndef VQ3900_TOOLS_IMAGE_READER_H
#define VQ3900_TOOLS_IMAGE_READER_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bytes/layout.h"

namespace vq3900::tool {

struct ImageField {
  std::string name;
  std::string text;             // for people
  nlohmann::ordered_json json;  // for programs
  std::string bytes;            // as they stand in the image
};

// A register table inside an image; the name is that of the library's table.
struct ImageRegisters {
  std::string block;
  std::vector<DeRegElement_S> elements;
};

// Something that an image says of itself: a CRC, a digest, a count.
struct ImageCheck {
  std::string what;
  bool good = false;
  std::string detail;
};

struct ImageItem {
  std::string name;
  std::vector<ImageField> fields;
  std::vector<ImageRegisters> registers;
};

struct ImageSection {
  std::string name;
  std::uint64_t offset = 0;
  std::vector<ImageField> header;
  std::vector<ImageItem> items;
  std::vector<ImageCheck> checks;
};

struct Image {
  std::string kind;  // "register file", "configuration image", ...
  std::size_t size = 0;
  std::vector<ImageSection> sections;

  bool good() const;  // every check of every section
};

using Bytes = std::span<const std::uint8_t>;

// What the bytes are, or nothing when their size and marks fit none of the known files.
std::optional<Image> read_image(Bytes bytes);

// --- for the readers of the single kinds

// Takes the fields of a structure out of its bytes: numbers and texts as fields, register tables apart.
template <typename Record>
std::vector<FieldLayout> layouts_of(std::span<const LayoutRow<Record>> rows) {
  return {rows.begin(), rows.end()};
}

ImageItem read_item(std::string name, std::span<const FieldLayout> layout, Bytes bytes);

ImageCheck crc_check(Bytes covered, std::size_t crc_offset);
ImageCheck digest_check(const std::string& what, Bytes stored, Bytes covered);
ImageCheck equality_check(const std::string& what, std::uint64_t found, std::uint64_t expected);

std::string hex_text(Bytes bytes);

}  // namespace vq3900::tool

#endif
