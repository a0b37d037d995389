// Calibrations, the images made of them, and the updates of those.
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "calib_arguments.h"
#include "stateful_steps.h"

namespace vq3900::fuzz {

namespace {

// --- the log callback

struct LogFault : std::runtime_error {
  LogFault() : std::runtime_error("log") {}
};

// Calls with a log callback of some kind: one of C, one that throws, an empty one, or none. What the last three raise
// passes through the library.
template <typename Call>
void with_log(World& world, Call call) {
  const auto kind = world.take<std::uint8_t>() % 32;
  DeLogCallback throwing = [](const char*) { throw LogFault(); };
  DeLogCallback empty;
  std::size_t messages = 0;
  const auto on_text = [](const char* text, void* user) {
    require(text != nullptr);
    ++*static_cast<std::size_t*>(user);
  };
  const std::unique_ptr<DeLogCallback, void (*)(DeLogCallback*)> counting{de_log_callback_create(on_text, &messages),
                                                                          de_log_callback_destroy};
  require(counting != nullptr && de_log_callback_create(nullptr, nullptr) == nullptr);
  DeLogCallback* const given = kind == 31 ? nullptr : kind == 30 ? &empty : kind == 29 ? &throwing : counting.get();
  try {
    call(given);
  } catch (const LogFault&) {
    require(given == &throwing);
  } catch (const std::bad_function_call&) {
    require(given == nullptr || given == &empty);
  }
}

// --- conversions

void set_temperatures(World& world) {
  if (!world.rarely()) return set_calib_temp_info(30, 31, 35);
  const auto [left, right, laser] = reals<float, 3>(world);
  set_calib_temp(left, right, laser);
}

void configure(World& world) {
  require(load_input_configs_content(calib_text(world).c_str()) == VQ3900_OK);
}

void convert(World& world) {
  const auto calib = calibration<CalibrateParamsMulti>(world);
  DeStereoRectifyParams_S rect{};
  DeCameraD2CParams_S d2c{};
  DepthCalcParams_S depth{};
  with_log(world, [&](DeLogCallback* log) {
    expect_one_of(align_ir_ir_rgb_params_to_register_converter(
                      calib, or_null(world, rect), or_null(world, d2c), or_null(world, depth), log),
                  {0, -2, -3, 4096});
  });
  DeCameraIntrinsic_S intrinsic{};
  get_virtual_intrinsic_of_stereo_debug(or_null(world, intrinsic));
  DeStereoRectifyParams_S* const given = or_null(world, rect);
  expect_one_of(cams_calibration_params_to_register_converter(nullptr, given, &d2c, &depth), {0, -2});
}

void set_companions(World& world) {
  const auto words = world.take<std::array<std::uint64_t, 3>>();
  set_sn(&words[0], &words[1], or_null(world, words[2]));
  const auto records = world.take<std::int8_t>() % 6;
  std::vector<DeAlignRecord_S> alignment(records > 0 ? static_cast<std::size_t>(records) : 0);
  const bool held = records >= 0 && records <= VQ3900_ALIGNMENT_RECORDS;
  expect_refused_if(!held, de_set_alignment_records(alignment.data(), records));
  const auto entries = world.take<std::int8_t>() % 4;
  std::vector<DeDepthConfig_S> depth(entries > 0 ? static_cast<std::size_t>(entries) : 0);
  expect_refused_if(entries < 0, set_optimized_d2d_params(depth.data(), entries));
  if (world.rarely()) require(release_optimized_d2d_params() == VQ3900_OK);
  if (world.rarely()) require(de_release_alignment_records() == VQ3900_OK);
}

// --- images in memory

// Some configurations with a calibration each.
struct Builds {
  explicit Builds(World& world) : count(world.take<std::uint8_t>() % 3U), alignment(world.take<std::uint8_t>() & 1) {
    for (std::size_t i = 0; i < count; ++i) {
      texts[i] = calib_text(world);
      configs[i] = texts[i].c_str();
      calibs[i] = calibration<DeCalibRecord_S>(world);
      records[i] = or_null(world, calibs[i]);
    }
  }

  CalibFlashInput_S input(World& world) const {
    const auto size = static_cast<std::uint8_t>(count);
    const auto other = static_cast<std::uint8_t>(world.rarely() ? 2 - size : size);
    return {nullptr, 0, configs.data(), size, records.data(), other, world.rarely() ? nullptr : &alignment};
  }

  std::size_t count;
  std::uint8_t alignment;
  std::array<std::string, 2> texts;
  std::array<const char*, 2> configs{};
  std::array<DeCalibRecord_S, 2> calibs{};
  std::array<const DeCalibRecord_S*, 2> records{};
};

void build_in_memory(World& world) {
  const Builds builds(world);
  CalibFlashInput_S input = builds.input(world);
  set_calib_temp(30, 30, 30);
  std::uint32_t image_size = 0;
  std::uint32_t lut_size = 0;
  get_file_buffer_size(&input, &image_size);
  get_file_buffer_size(or_null(world, input), or_null(world, image_size));
  with_log(world, [&](DeLogCallback* log) { get_lut_section_buffer_size(&input, &lut_size, log); });
  const std::uint32_t wanted = lut_size;
  if (world.rarely()) image_size /= 2;
  if (world.rarely()) lut_size /= 2;
  // Exactly as large as they are said to be, so that a byte more is noticed.
  std::vector<std::uint32_t> image(image_size / 4);
  std::vector<std::uint8_t> lut(lut_size);
  std::vector<std::uint8_t> factory(world.rarely() ? 60 : 60 + builds.count * 6288);
  const bool with_factory = !world.rarely();
  with_log(world, [&](DeLogCallback* log) {
    const std::int32_t code = gen_calib_flash_param_de(or_null(world, input),
                                                       image.data(),
                                                       log,
                                                       image_size,
                                                       world.rarely() ? nullptr : lut.data(),
                                                       static_cast<int>(lut_size),
                                                       world.take<std::int16_t>(),
                                                       with_factory ? factory.data() : nullptr,
                                                       static_cast<int>(factory.size()));
    expect_one_of(code, {0, -2, -3, -4, -5, -6, 4096});
    require(code != 0 || lut_size == 0 || lut_size == wanted || wanted <= 4096);
    if (code != 0) return;
    expect_sound_image({reinterpret_cast<const std::uint8_t*>(image.data()), image.size() * 4});
    if (wanted > 4096) expect_sound_image(lut);
    if (with_factory) expect_sound_image(factory);
  });
}

// --- images in files, and their updates

std::string write_part(World& world, const char* ending, std::size_t size) {
  const std::vector<std::uint8_t> bytes(size, world.take<std::uint8_t>());
  std::string path = own_path(ending);
  write_file(path, bytes);
  return path;
}

void build_in_files(World& world) {
  const std::string text = calib_text(world);
  const std::string config = own_path(".calib.ini");
  write_file(config, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  const auto size = world.take<std::uint16_t>();
  const std::string params = write_part(world, world.rarely() ? ".params.txt" : ".params.bin", size);
  const std::array<const char*, 2> files{params.c_str(), world.rarely() ? nullptr : params.c_str()};
  const std::array<const char*, 2> configs{config.c_str(), config.c_str()};
  const auto count = static_cast<std::uint8_t>(world.take<std::uint8_t>() % 3U);
  const auto other = static_cast<std::uint8_t>(world.rarely() ? 2 - count : count);
  const std::uint8_t alignment = world.take<std::uint8_t>() & 1;
  CalibFlashInput_S input{files.data(), count, configs.data(), other, nullptr, 0, &alignment};
  const std::string path = own_path(kBuiltImage);
  const std::int32_t code = gen_calib_flash_file_de(or_null(world, input), world.rarely() ? nullptr : path.c_str());
  expect_one_of(code, {0, -1, -2, -3, -5, -6, 4096});
  if (code == 0) {
    const std::string image = read_file(path);
    expect_sound_image({reinterpret_cast<const std::uint8_t*>(image.data()), image.size()});
  }
}

// The image of build_in_files(), if there is one: its records are zero.
void update_image(World& world) {
  const std::string path = own_path(kBuiltImage);
  const auto pairs = reals<float, 8>(world);
  const float* const given = world.rarely() ? nullptr : pairs.data();
  const int count = world.take<std::uint8_t>() % 5;
  const std::string to = own_path(world.rarely() ? kBuiltImage : ".updated.bin");
  const int index = world.take<std::int8_t>();
  expect_one_of(update_baseline_de(path.c_str(), pairs[0], to.c_str(), index), {0, -1, -2, 4096});
  expect_one_of(update_multi_baseline_de(path.c_str(), given, count, to.c_str()), {0, -1, -2, 4096});
  expect_one_of(update_multi_fb_d2c_de(path.c_str(), given, count, to.c_str()), {0, -1, -2, 4096});
}

constexpr std::array kSteps = std::to_array<Step>(
    {set_temperatures, configure, convert, set_companions, build_in_memory, build_in_files, update_image});

}  // namespace

std::span<const Step> calib_steps() {
  return kSteps;
}

}  // namespace vq3900::fuzz
