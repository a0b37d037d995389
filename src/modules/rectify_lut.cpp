#include "modules/rectify_lut.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "modules/lut_encoding.h"

namespace vq3900 {

namespace {

using Info = RectifyLutInfo;

// Both cameras' tables have the same form: registers are named by their offset in the camera's block.
consteval std::uint8_t at(std::uint32_t offset) {
  return element_at(startup::rectify_lut_info(kCamera1Block), kCamera1Block + offset);
}

// A start may lie left of or above the image: it is a two's-complement number.
template <auto Member>
constexpr Field<Info> start(std::uint32_t mask, const char* name) {
  return {{name, at(0x74), mask, Coding::kFixed, {10, 0, name}},
          [](const Info& info) { return static_cast<double>(static_cast<std::int32_t>(info.*Member)); },
          [](Info& info, double value) { info.*Member = static_cast<std::uint32_t>(to_integer(value)); }};
}

template <auto Member>
constexpr Field<Info> intrinsic(std::uint8_t element, std::int32_t frac_bits, const char* name) {
  return fixed<Member>(name, element, 0xFFFFFFFF, {32, frac_bits, name});
}

constexpr auto kFields = std::to_array<Field<Info>>({
    start<&Info::lut_x_start>(0x000003FF, "lut_x_start"),
    start<&Info::lut_y_start>(0x03FF0000, "lut_y_start"),
    intrinsic<&Info::lut_fx>(at(0x90), 20, "lut_fx"),
    intrinsic<&Info::lut_fy>(at(0x94), 20, "lut_fy"),
    intrinsic<&Info::lut_cx>(at(0x98), 22, "lut_cx"),
    intrinsic<&Info::lut_cy>(at(0x9C), 22, "lut_cy"),
    integer<&Info::lut_width>("lut_width", at(0xD4), 0x000003FF),
    integer<&Info::lut_height>("lut_height", at(0xD4), 0x03FF0000),
    derived<Info>("sample_rate_bit - 3", at(0x70), 0x00000300,
                  [](const Info& info) -> double { return info.sample_rate_bit - kMinSampleRateBit; }),
});
static_assert(well_formed(kFields, startup::rectify_lut_info(kCamera1Block)));

constexpr std::uint32_t kDxOffset = 0x40000;  // of the sections in the camera's block
constexpr std::uint32_t kDyOffset = 0x60000;
constexpr std::size_t kMostSamples = std::size_t{1} << 24;  // far beyond what the device addresses

std::size_t samples(const Info& info) {
  return std::size_t{info.lut_width} * info.lut_height;
}

void drop(HeldSection& section) {
  section.room.release();
  section.encoded = 0;
  section.address = 0;
  section.count = 0;
}

void place_section(HeldSection& section, const Info& info, std::uint32_t address) {
  section.address = address;
  section.count = info.lut_height * info.lut_width;
}

bool encode_section(const double* grid, const Info& info, const char* name, HeldSection& section,
                    OverflowHandler on_overflow) {
  section.encoded =
      encode_tiles(grid, {info.lut_width, info.lut_height}, name, section.room.span().data(), on_overflow);
  return section.encoded == samples(info);
}

void store_descriptor(const Info& info, RectifyLut& lut) {
  lut.info = info;
  lut.info.dx = nullptr;
  lut.info.dy = nullptr;
}

}  // namespace

std::span<const Field<RectifyLutInfo>> rectify_lut_info_fields() {
  return kFields;
}

bool copy_grid(const RectifyLutInfo& info, RectifyLut& lut) {
  if (!lut.grid.assign(info.dx, info.dy, samples(info))) return false;
  store_descriptor(info, lut);
  return true;
}

void keep_grid(const RectifyLutInfo& info, GridOwner owner, RectifyLut& lut) {
  lut.grid.keep(info.dx, info.dy, std::move(owner));
  store_descriptor(info, lut);
}

void end_owner(RectifyLut& lut) {
  if (!lut.grid.kept()) return;
  if (!lut.grid.assign(lut.grid.dx(), lut.grid.dy(), samples(lut.info))) lut.grid.release();
}

bool prepare_sections(RectifyLutState& state) {
  const std::size_t camera_1 = samples(state.camera[1].info);
  const std::size_t camera_0 = samples(state.camera[0].info);
  const std::array<std::size_t, 4> rooms{
      camera_1, camera_1, std::max(camera_1, camera_0), std::max(camera_1, camera_0)};
  for (HeldSection& section : state.sections)
    drop(section);
  if (std::max(camera_1, camera_0) > kMostSamples) return false;
  for (std::size_t i = 0; i < state.sections.size(); ++i) {
    HeldSection& section = state.sections[i];
    if (!section.room.allocate(rooms[i])) {
      std::for_each(state.sections.begin(), state.sections.end(), drop);
      return false;
    }
    section.count = static_cast<std::uint32_t>(camera_1);  // of camera 0's sections too, until they are converted
  }
  return true;
}

void hand_out(HeldSection& section, std::uint32_t length, LutSection& out) {
  out.address = section.address;
  out.count = section.count;
  if (!section.room.held()) return;
  const auto words = section.words();
  const std::size_t copied = std::min<std::size_t>(length, words.size());
  std::copy_n(words.begin(), copied, out.data);
  std::fill_n(out.data + copied, length - copied, 0U);
  drop(section);
}

LutFault encode_lut(const RectifyLut& lut, std::uint32_t camera_1_sample_rate_bit, const LutTarget& target,
                    const LutEvents& events) {
  Info info = lut.info;
  if (info.lut_width % kLutTile != 0 || info.lut_height % kLutTile != 0) return LutFault::kSize;
  info.sample_rate_bit = camera_1_sample_rate_bit;
  if (!encode_fields_until_overflow(kFields, info, target.table, events.on_overflow)) return LutFault::kOverflow;
  if (lut.grid.dx() == nullptr || lut.grid.dy() == nullptr) return LutFault::kGridMissing;

  place_section(target.dx, info, target.block + kDxOffset);
  place_section(target.dy, info, target.block + kDyOffset);
  events.on_progress(LutProgress::kDx);
  if (!encode_section(lut.grid.dx(), info, "lut_dx", target.dx, events.on_overflow)) return LutFault::kOverflow;
  events.on_progress(LutProgress::kDy);
  if (!encode_section(lut.grid.dy(), info, "lut_dy", target.dy, events.on_overflow)) return LutFault::kOverflow;
  events.on_progress(LutProgress::kEnd);
  return LutFault::kNone;
}

}  // namespace vq3900
