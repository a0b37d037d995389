// What the stateful target is made of: steps that call one exported function or a few, with arguments of the input.
#ifndef VQ3900_TESTS_FUZZ_STATEFUL_STEPS_H
#define VQ3900_TESTS_FUZZ_STATEFUL_STEPS_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <span>

#include "fuzz_support.h"
#include "sim_device.h"

namespace vq3900::fuzz {

struct World {
  Input& in;
  sim::SimDevice& device;

  template <typename Number>
  Number take() {
    return in.take<Number>();
  }
  bool rarely() { return in.take<std::uint8_t>() % 16 == 15; }
};

// The ending of the calibration image that a step builds and others update.
inline constexpr const char* kBuiltImage = ".image.bin";

using Step = void (*)(World&);

std::span<const Step> register_steps();  // tables, callbacks, entry points, fixed point
std::span<const Step> block_steps();     // setters, getters and converters of the blocks
std::span<const Step> rectify_steps();   // those of the rectification
std::span<const Step> file_steps();      // configurations, snapshots and their images
std::span<const Step> calib_steps();     // calibrations and their images

// --- arguments

// A number as callers may pass it: any bits, an odd one, or one of ordinary size.
template <typename Real>
Real real(World& world) {
  using Limits = std::numeric_limits<Real>;
  static constexpr std::array<Real, 12> kOdd{0,
                                             -Real{0},
                                             Limits::quiet_NaN(),
                                             Limits::infinity(),
                                             -Limits::infinity(),
                                             Limits::max(),
                                             Limits::lowest(),
                                             Limits::min(),
                                             Limits::denorm_min(),
                                             Real{2147483648.0},
                                             Real{4294967296.0},
                                             Real{18446744073709551616.0}};
  const auto kind = world.take<std::uint8_t>();
  if (kind < 32) return kOdd[kind % kOdd.size()];
  if (kind < 64) return world.take<Real>();
  return static_cast<Real>(world.take<std::int16_t>()) / (kind % 2 == 0 ? 1 : 1024);
}

template <typename Real, std::size_t Count>
std::array<Real, Count> reals(World& world) {
  std::array<Real, Count> values{};
  for (Real& value : values)
    value = real<Real>(world);
  return values;
}

// The address of an argument; now and then null.
template <typename Argument>
Argument* or_null(World& world, Argument& argument) {
  return world.rarely() ? nullptr : &argument;
}

// --- codes

inline void expect_one_of(std::int32_t code, std::initializer_list<std::int32_t> codes) {
  bool found = false;
  for (const std::int32_t one : codes)
    found = found || code == one;
  require(found);
}

// The code of a function whose only fault is a null pointer.
inline void expect_refused_if(bool null, std::int32_t code) {
  require(code == (null ? VQ3900_ERROR_ARGUMENT : VQ3900_OK));
}

// The tool knows what kind of file the bytes are, and finds every check of it good.
void expect_sound_image(std::span<const std::uint8_t> bytes);

// Stores a record with the bytes of the input.
template <typename Record>
void store(World& world, std::int32_t (*set)(const Record*)) {
  const Record record = world.take<Record>();
  const Record* const given = or_null(world, record);
  expect_refused_if(given == nullptr, set(given));
}

template <typename Record>
void fetch(World& world, std::int32_t (*get)(Record*)) {
  Record record{};
  Record* const given = or_null(world, record);
  expect_refused_if(given == nullptr, get(given));
}

}  // namespace vq3900::fuzz

#endif
