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

#include "register_blocks.h"

namespace vq3900::tool {

struct ImageField {
  std::string name;
  std::size_t offset = 0;       // in the file
  std::string text;             // for people
  nlohmann::ordered_json json;  // for programs
  std::string bytes;            // as they stand in the image
};

// A register table inside an image; named after the library's table, or after its place in the structure.
struct ImageRegisters {
  std::string block;
  std::size_t offset = 0;  // in the file
  std::vector<DeRegElement_S> elements;
};

// The library's table that these registers are; null for none.
const RegisterBlock* block_of(const ImageRegisters& registers);

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

using Bytes = std::span<const std::uint8_t>;

inline Bytes bytes_of(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

struct Image {
  std::string kind;                 // "register file", "calibration image", ...
  std::vector<std::uint8_t> bytes;  // the whole file
  std::vector<ImageSection> sections;

  bool good() const;  // every check of every section
};

// What the bytes are, or nothing when their size and marks fit none of the known files.
std::optional<Image> read_image(Bytes bytes);

}  // namespace vq3900::tool

#endif
