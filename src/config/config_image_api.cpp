#include <algorithm>
#include <exception>
#include <span>
#include <string>

#include "bytes/md5_gen_api.h"
#include "config/config_image.h"
#include "platform/clock.h"
#include "platform/diagnostics.h"
#include "platform/file.h"
#include "regs/steps.h"
#include "state/engine.h"

using vq3900::engine;

namespace {

using vq3900::ConfigSectionWriter;

// A path in a character array: up to its terminator, or the whole array.
template <std::size_t Size>
std::string bounded_text(const char (&text)[Size]) {
  return {text, std::find(text, text + Size, '\0')};
}

// The time stamp of a section without a version.
uint32_t stamp_or_time(uint32_t version) {
  return version != 0 ? version : static_cast<uint32_t>(vq3900::calendar_time());
}

// Puts the digest of an item's key into its first bytes.
void digest_item(const ConfigSectionWriter& writer, std::span<uint8_t> bytes) {
  const auto key = writer.digested(bytes);
  vq3900::Md5_gen(key.data(), bytes.data(), static_cast<uint32_t>(key.size()));
}

int32_t convert_configuration() {
  return vq3900::run_steps(convert_basic_config_to_registers,
                           convert_rectify_control_float_to_register,
                           convert_d2c_ctrl_to_register_elements,
                           convert_d2d_config_to_register_element,
                           convert_prefilter_float_to_registers,
                           convert_extend_chop_float_to_registers,
                           convert_calc_disp_float_to_registers,
                           convert_gpm_float_to_registers);
}

// Loads and applies one configuration and appends its item. The version read is kept if it is the largest so far.
int32_t add_dpu_configuration(const char* path, ConfigSectionWriter& writer, uint32_t& largest_version) {
  if (load_de_input_configs(path) != VQ3900_OK) {
    vq3900::print_out("error: load_input_configs, path=%s \n", vq3900::printable(path));
    return -3;
  }
  if (set_depth_engine_config() != VQ3900_OK) {
    vq3900::print_out("error: set_depth_engine_config, path=%s \n", vq3900::printable(path));
    return -4;
  }
  vq3900::DpuItem item;
  unsigned int version = 0;
  de_copy_dpu_mode_config(&item.mode, &version);
  largest_version = std::max(largest_version, version);
  const std::span<uint8_t> bytes = writer.next_item();
  vq3900::write_item(item, bytes);
  digest_item(writer, bytes);
  std::copy_n(bytes.begin(), item.md5.size(), item.md5.begin());
  if (const int32_t code = convert_configuration(); code != VQ3900_OK) return code;

  const vq3900::RegisterTables& tables = engine().registers;
  item.control = tables.basic_ctrl;
  item.rectify_ctrl = tables.rectify_ctrl;
  item.prefilter = tables.prefilter;
  item.extend_chop = tables.extend_chop;
  item.disparity = tables.disp_calc;
  item.gpm = tables.gpm;
  get_dpu_scheme_config(&item.scheme);
  vq3900::write_item(item, bytes);
  return VQ3900_OK;
}

int32_t build_dpu_section(const de_config_flash_input& input, std::span<uint8_t> image) {
  if (input.dpu_config_count == 0 || input.dpu_config_paths == nullptr) return VQ3900_OK;  // the room stays empty
  if (input.dpu_config_count > vq3900::kDpuSection.most_items()) return VQ3900_ERROR_ARGUMENT;
  ConfigSectionWriter writer{image, vq3900::kDpuSection};
  uint32_t largest_version = 0;
  for (const char* const path : std::span{input.dpu_config_paths, input.dpu_config_count}) {
    if (const int32_t code = add_dpu_configuration(path, writer, largest_version); code != VQ3900_OK) return code;
  }
  writer.close(stamp_or_time(largest_version));
  return VQ3900_OK;
}

// A section of loaded groups: D2C or IR-pre.
template <typename Item>
int32_t build_group_section(const std::string& path, int32_t (*load)(const char*),
                            void (*get)(Item**, int*, unsigned int*), const vq3900::ConfigSection& section,
                            std::span<uint8_t> image) {
  if (load(path.c_str()) != VQ3900_OK) {
    vq3900::print_out("error: load_input_configs, path=%s \n", path.c_str());
    return VQ3900_ERROR_ARGUMENT;
  }
  Item* items = nullptr;
  int count = 0;
  unsigned int version = 0;
  get(&items, &count, &version);
  if (static_cast<uint32_t>(count) > section.most_items()) return VQ3900_ERROR_ARGUMENT;
  ConfigSectionWriter writer{image, section};
  for (const Item& item : std::span{items, static_cast<std::size_t>(count)}) {
    const std::span<uint8_t> bytes = writer.next_item();
    vq3900::write_item(item, bytes);
    digest_item(writer, bytes);
  }
  writer.close(stamp_or_time(version));
  return VQ3900_OK;
}

// Builds all sections in memory. False: a section failed, which was printed.
bool build_image(const de_config_flash_input& input, std::span<uint8_t> image) {
  if (build_dpu_section(input, image) != VQ3900_OK) {
    vq3900::print_out("error: convert dpu configs failed \n");
    return false;
  }
  if (build_group_section(
          bounded_text(input.d2c_config_path), load_d2c_configs, de_get_d2c_config, vq3900::kD2cSection, image) !=
      VQ3900_OK) {
    vq3900::print_out("error: convert d2c configs failed \n");
    return false;
  }
  if (build_group_section(bounded_text(input.ir_pre_config_path),
                          load_ir_pre_configs,
                          de_get_ir_pre_config,
                          vq3900::kIrPreSection,
                          image) != VQ3900_OK) {
    vq3900::print_out("error: convert ir_pre_isp configs failed \n");
    return false;
  }
  return true;
}

}  // namespace

bool gen_depth_engine_config_flash_file(const char* path) {
  vq3900::OutputFile file{path};
  if (!file.is_open()) {
    vq3900::print_out("error: create or open file failed, path=%s \n", vq3900::printable(path));
    return false;
  }
  const int32_t code = vq3900::run_steps(convert_basic_config_to_registers,
                                         convert_d2c_ctrl_to_register_elements,
                                         convert_d2d_config_to_register_element,
                                         convert_prefilter_float_to_registers,
                                         convert_extend_chop_float_to_registers,
                                         convert_calc_disp_float_to_registers,
                                         convert_gpm_float_to_registers);
  if (code != VQ3900_OK) return false;  // the created file stays empty
  file.write(vq3900::build_register_file(engine().registers));
  return true;
}

bool gen_depth_engine_config_flash_file_de(de_config_flash_input* input, const char* path) try {
  if (input == nullptr) return false;
  vq3900::OutputFile file{path};
  if (!file.is_open()) {
    vq3900::print_out("error: create or open file failed, path=%s \n", vq3900::printable(path));
    return false;
  }
  std::array<uint8_t, vq3900::kConfigImageSize> image{};
  image.fill(0xFF);
  // A section that fails leaves the file empty and the call successful: the host looks at the file's size.
  if (build_image(*input, image)) file.write(image);
  return true;
} catch (const std::exception&) {  // no memory
  return false;
}
