// Configurations, snapshots and the images made of them. The texts are the examples, now and then with other bytes.
#include <algorithm>
#include <string>
#include <vector>

#include "stateful_steps.h"

namespace vq3900::fuzz {

namespace {

constexpr const char* kEngineExamples[] = {"stereo_1280x800.ini", "mono_640x480.ini"};
constexpr const char* kCalibExamples[] = {
    "calib_euroc.ini", "calib_euroc_lut.ini", "calib_kitti.ini", "calib_kitti_lut.ini"};

std::string example(const std::string& name) {
  return std::string(VQ3900_EXAMPLES) + "/" + name;
}

template <std::size_t Count>
std::string some_example(World& world, const char* const (&names)[Count]) {
  return example(names[world.take<std::uint8_t>() % Count]);
}

// A file's bytes, some of them replaced.
std::string changed_text(World& world, const std::string& path) {
  std::string text = read_file(path);
  for (int changes = world.take<std::uint8_t>() % 4; changes > 0 && !text.empty(); --changes) {
    const std::size_t at = world.take<std::uint16_t>() % text.size();
    text[at] = world.take<char>();
  }
  return text;
}

// The path of a copy of a file, with changes.
std::string changed_copy(World& world, const std::string& path) {
  const std::string text = changed_text(world, path);
  std::string copy = own_path(".ini");
  write_file(copy, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  return copy;
}

void expect_sound_file(const std::string& path) {
  const std::string bytes = read_file(path);
  expect_sound_image({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

void load_engine(World& world) {
  const std::string path = changed_copy(world, some_example(world, kEngineExamples));
  expect_one_of(load_de_input_configs(path.c_str()), {0, -5, -6, -7, -8, -9, -10, -11, -12});
  require(load_de_input_configs(nullptr) == VQ3900_LOAD_CANNOT_OPEN);
}

void apply_engine(World&) {
  expect_one_of(set_depth_engine_config(), {0, -1, -2, -3, -5});
}

void load_groups(World& world) {
  const bool d2c = (world.take<std::uint8_t>() & 1) != 0;
  const std::string path = changed_copy(world, example(d2c ? "d2c_groups.ini" : "ir_pre_groups.ini"));
  expect_one_of(d2c ? load_d2c_configs(path.c_str()) : load_ir_pre_configs(path.c_str()), {0, -1, -5});
}

void load_calib(World& world) {
  const std::string from = some_example(world, kCalibExamples);
  if (world.rarely()) {
    require(load_input_configs_path(std::string(257, 'x').c_str()) == 4096);
    require(load_input_configs_path(nullptr) == -1 && load_input_configs_content(nullptr) == VQ3900_ERROR_ARGUMENT);
  } else if ((world.take<std::uint8_t>() & 1) != 0) {
    expect_one_of(load_input_configs_path(changed_copy(world, from).c_str()), {0, -2, -3});
  } else {
    expect_one_of(load_input_configs_content(changed_text(world, from).c_str()), {0, -2, -3});
  }
}

void ask_configuration(World& world) {
  dpu_mode mode{};
  auto version = static_cast<unsigned int>(world.take<std::uint32_t>());
  unsigned int* const given = or_null(world, version);
  expect_refused_if(given == nullptr, de_copy_dpu_mode_config(&mode, given));
  dpu_scheme_config scheme{};
  get_dpu_scheme_config(or_null(world, scheme));
  unsigned char answer = 0;
  get_cam_mode(or_null(world, answer));
  get_d2d_params_unit_in_R_en(or_null(world, answer));
  get_mipi_channel_status(or_null(world, answer));
  static_cast<void>(get_lut_enable_status());
}

void ask_groups(World&) {
  d2c_cfg_item* d2c_items = nullptr;
  ir_pre_cfg_item* ir_pre_items = nullptr;
  int count = 0;
  unsigned int version = 0;
  de_get_d2c_config(d2c_items, count, version);
  require(d2c_items != nullptr && count >= 0 && count <= 100);
  de_get_ir_pre_config(ir_pre_items, count, version);
  require(ir_pre_items != nullptr && count >= 0 && count <= 10);
}

// --- snapshots and images

void save_and_restore(World& world) {
  const std::string path = own_path(".snapshot");
  require(de_export_config_params_to_file(path.c_str()) == VQ3900_OK);
  require(de_import_config_params_from_file(changed_copy(world, path).c_str()) == VQ3900_OK);
  require(de_export_config_params_to_file(nullptr) == VQ3900_ERROR_ARGUMENT);
  require(de_import_config_params_from_file(nullptr) == VQ3900_ERROR_ARGUMENT);
}

void write_register_file(World& world) {
  const std::string path = own_path(".registers");
  const bool good = !world.rarely();
  require(gen_depth_engine_config_flash_file(good ? path.c_str() : nullptr) == good);
  if (good) expect_sound_file(path);
}

// The member of the input that takes a path: up to 256 bytes, the terminator among them or not.
void set_path(World& world, const std::string& path, char (&member)[256]) {
  if (world.rarely()) std::fill(std::begin(member), std::end(member), 'x');
  if (!world.rarely()) std::copy_n(path.c_str(), std::min<std::size_t>(path.size() + 1, 256), member);
}

void write_config_image(World& world) {
  std::vector<std::string> paths(world.take<std::uint8_t>() % 10);
  std::vector<const char*> pointers;
  for (std::string& path : paths) {
    path = some_example(world, kEngineExamples);
    pointers.push_back(path.c_str());
  }
  de_config_flash_input input{};
  input.dpu_config_paths = pointers.empty() ? nullptr : pointers.data();
  input.dpu_config_count = static_cast<std::uint8_t>(paths.size());
  set_path(world, changed_copy(world, example("d2c_groups.ini")), input.d2c_config_path);
  set_path(world, example("ir_pre_groups.ini"), input.ir_pre_config_path);
  const std::string path = own_path(".config");
  const bool good = !world.rarely();
  require(gen_depth_engine_config_flash_file_de(good ? &input : nullptr, path.c_str()) == good);
  if (good && !read_file(path).empty()) expect_sound_file(path);
}

constexpr std::array kSteps = std::to_array<Step>({load_engine,
                                                   apply_engine,
                                                   load_groups,
                                                   load_calib,
                                                   ask_configuration,
                                                   ask_groups,
                                                   save_and_restore,
                                                   write_register_file,
                                                   write_config_image});

}  // namespace

std::span<const Step> file_steps() {
  return kSteps;
}

}  // namespace vq3900::fuzz
