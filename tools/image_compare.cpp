#include "image_compare.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "image_checks.h"
#include "image_fields.h"
#include "register_blocks.h"

namespace vq3900::tool {

namespace {

constexpr std::size_t kMostBytesShown = 32;

// What stands at a place: for people, and as bytes, which decide whether two images differ there.
struct Content {
  std::string text;
  std::string bytes;
  std::size_t offset = 0;
  std::size_t order = 0;  // of places at the same offset
};

// Everything that an image says, by place.
class Places {
 public:
  explicit Places(const Image& image) {
    add_text("kind", 0, image.kind);
    add_text("size", 0, fmt::format("{}", image.bytes.size()));
    for (const ImageSection& section : image.sections) {
      for (const ImageField& field : section.header)
        add(section.name + ".header." + field.name, field.offset, field.text, field.bytes);
      for (const ImageItem& item : section.items)
        add_item(item.name.empty() ? "" : fmt::format("{}[{}].", section.name, item.name), item);
    }
  }

  const Content* find(const std::string& place) const {
    const auto at = places_.find(place);
    return at == places_.end() ? nullptr : &at->second;
  }
  const std::map<std::string, Content>& all() const { return places_; }

 private:
  void add(const std::string& place, std::size_t offset, std::string text, std::string bytes) {
    places_[place] = {std::move(text), std::move(bytes), offset, places_.size()};
  }
  void add_text(const std::string& place, std::size_t offset, const std::string& text) {
    add(place, offset, text, text);
  }
  void add_word(const std::string& place, std::size_t offset, std::uint32_t word) {
    add_text(place, offset, fmt::format("0x{:08X}", word));
  }

  void add_item(const std::string& place, const ImageItem& item) {
    for (const ImageField& field : item.fields)
      add(place + field.name, field.offset, field.text, field.bytes);
    for (const ImageRegisters& registers : item.registers)
      add_registers(place, registers);
  }

  void add_registers(const std::string& place, const ImageRegisters& registers) {
    const RegisterBlock* const block = block_of(registers);
    for (std::size_t i = 0; i < registers.elements.size(); ++i) {
      const DeRegElement_S& element = registers.elements[i];
      const std::string name = fmt::format("{}{}[{}]", place, registers.block, i);
      const std::size_t offset = registers.offset + i * sizeof element;
      add_word(name + ".address", offset, element.address);
      add_word(name + ".mask", offset + 4, element.mask);
      add_word(name + ".value", offset + 8, element.value);
      if (block == nullptr) continue;
      for (const FieldBits& field : fields_of(*block, i)) {
        if (!field.written()) continue;
        add_text(name + "." + field.name, offset + 8, fmt::format("{:.9g}", decode_bits(field, element.value)));
      }
    }
  }

  std::map<std::string, Content> places_;
};

// A difference with what it is sorted by.
struct Found {
  std::size_t offset;
  std::size_t order;
  ImageDifference difference;
};

std::string hex_line(Bytes bytes) {
  const std::size_t shown = std::min(bytes.size(), kMostBytesShown);
  return hex_text(bytes.first(shown)) + (shown < bytes.size() ? "..." : "");
}

// Both texts; where they are the same though the bytes differ, the bytes from the first that differs.
ImageDifference difference_at(const std::string& place, const Content& first, const Content& second) {
  if (first.text != second.text) return {place, first.text, second.text};
  const std::size_t size = std::min(first.bytes.size(), second.bytes.size());
  std::size_t at = 0;
  while (at < size && first.bytes[at] == second.bytes[at])
    ++at;
  const auto text = [at](const Content& content) {
    return fmt::format("{} with {} from byte {} on", content.text, hex_line(bytes_of(content.bytes).subspan(at)), at);
  };
  return {place, text(first), text(second)};
}

void add_places(const Image& first, const Image& second, std::vector<Found>& found) {
  const Places a(first);
  const Places b(second);
  for (const auto& [place, content] : a.all()) {
    const Content* const other = b.find(place);
    if (other == nullptr) {
      found.push_back({content.offset, content.order, {place, content.text, ""}});
    } else if (content.bytes != other->bytes) {
      found.push_back({content.offset, content.order, difference_at(place, content, *other)});
    }
  }
  for (const auto& [place, content] : b.all()) {
    if (a.find(place) == nullptr) found.push_back({content.offset, content.order, {place, "", content.text}});
  }
}

// Which bytes of a file belong to a field.
std::vector<bool> known_bytes(const Image& image) {
  std::vector<bool> known(image.bytes.size());
  for (const ImageSection& section : image.sections) {
    visit_known(section, [&](std::size_t offset, std::size_t size) {
      std::fill_n(known.begin() + static_cast<std::ptrdiff_t>(offset), size, true);
    });
  }
  return known;
}

// The bytes from an offset up to another one, as far as there are any and as far as they fit a line.
std::string hex_part(const Image& image, std::size_t begin, std::size_t end) {
  end = std::min(end, image.bytes.size());
  return begin >= end ? "" : hex_line(Bytes{image.bytes}.subspan(begin, end - begin));
}

// What differs in gaps, padding and trailing bytes: in no field of either file.
void add_unknown_bytes(const Image& first, const Image& second, std::vector<Found>& found) {
  const std::vector<bool> known_first = known_bytes(first);
  const std::vector<bool> known_second = known_bytes(second);
  const std::size_t size = std::max(known_first.size(), known_second.size());
  const auto differs = [&](std::size_t i) {
    const bool in_first = i < known_first.size();
    const bool in_second = i < known_second.size();
    if ((in_first && known_first[i]) || (in_second && known_second[i])) return false;
    return in_first != in_second || first.bytes[i] != second.bytes[i];
  };
  for (std::size_t end = 0; end < size; ++end) {
    const std::size_t begin = end;
    while (end < size && differs(end))
      ++end;
    if (end == begin) continue;
    const std::string place =
        end - begin == 1 ? fmt::format("byte {}", begin) : fmt::format("bytes {} to {}", begin, end - 1);
    found.push_back({begin, size, {place, hex_part(first, begin, end), hex_part(second, begin, end)}});
  }
}

}  // namespace

std::vector<ImageDifference> compare_images(const Image& first, const Image& second) {
  std::vector<Found> found;
  add_places(first, second, found);
  if (first.kind == second.kind) add_unknown_bytes(first, second, found);
  std::stable_sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
    return std::tie(a.offset, a.order) < std::tie(b.offset, b.order);
  });
  std::vector<ImageDifference> differences;
  differences.reserve(found.size());
  for (Found& one : found)
    differences.push_back(std::move(one.difference));
  return differences;
}

}  // namespace vq3900::tool
