// The files that the depth engine's configuration is written to: the 928-byte register file and the 16384-byte flash
// image of three sections.
#ifndef VQ3900_CONFIG_CONFIG_IMAGE_H
#define VQ3900_CONFIG_CONFIG_IMAGE_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "bytes/layout.h"
#include "bytes/md5.h"
#include "state/register_tables.h"

namespace vq3900 {

// --- the register file

// The tables lie where the device looks for them, the count of each before it. The last word of the twelfth disparity
// register gives way to the count of the next table, whose thirtieth register lies beyond the end.
struct RegisterFile {
  std::uint32_t d2d_count = 0;
  RegisterTable<2> d2d{};
  std::uint32_t control_count = 0;
  RegisterTable<5> control{};
  std::uint32_t prefilter_count = 0;
  RegisterTable<18> prefilter{};
  std::uint32_t extend_chop_count = 0;
  RegisterTable<7> extend_chop{};
  std::uint32_t disparity_count = 0;
  RegisterTable<11> disparity{};
  std::uint32_t last_disparity_address = 0;
  std::uint32_t last_disparity_mask = 0;
  std::uint32_t gpm_count = 0;
  RegisterTable<29> gpm{};
};

inline constexpr std::size_t kRegisterFileSize = 928;

std::span<const LayoutRow<RegisterFile>> register_file_layout();
std::array<std::uint8_t, kRegisterFileSize> build_register_file(const RegisterTables& tables);

// --- the flash image

inline constexpr std::size_t kConfigImageSize = 16384;

// The header of a section. The CRC-32 covers the section's first `length` bytes, this word itself taken as 0.
struct ConfigSectionHeader {
  std::uint32_t magic = 0;
  std::uint32_t crc = 0;
  std::uint32_t length = 0;
  std::uint32_t address = 0;  // in the device's flash
  std::uint32_t format = 18;
  std::uint32_t stamp = 0;  // version, or the time of building
  std::uint32_t item_magic = 0;
  std::uint32_t item_count = 0;
  std::uint32_t item_size = 0;
};

inline constexpr std::size_t kConfigHeaderSize = 36;

std::span<const LayoutRow<ConfigSectionHeader>> config_header_layout();

ConfigSectionHeader read_config_header(std::span<const std::uint8_t> section);

// A kind of section: where it lies, what marks it, and how much of each item its digest covers.
struct ConfigSection {
  const char* name;
  std::uint32_t offset;
  std::uint32_t room;
  std::uint32_t magic;
  std::uint32_t address;
  std::uint32_t item_magic;
  std::uint32_t item_size;
  std::uint32_t digest_first;  // of the item
  std::uint32_t digest_size;

  constexpr std::uint32_t most_items() const {
    return (room - static_cast<std::uint32_t>(kConfigHeaderSize)) / item_size;
  }
};

inline constexpr ConfigSection kDpuSection{"dpu", 0, 8192, 0x46447306, 0x14000, 0x46446103, 984, 16, 32};
inline constexpr ConfigSection kD2cSection{"d2c", 8192, 4096, 0x46447307, 0x16000, 0x46446104, 72, 16, 36};
inline constexpr ConfigSection kIrPreSection{"ir_pre", 12288, 4096, 0x4644730E, 0x17000, 0x4644610B, 156, 16, 20};
inline constexpr std::array kConfigSections{kDpuSection, kD2cSection, kIrPreSection};

// One depth-engine configuration.
struct DpuItem {
  std::array<std::uint8_t, 16> md5{};
  dpu_mode mode{};
  RegisterTable<5> control{};
  RegisterTable<3> rectify_ctrl{};
  RegisterTable<18> prefilter{};
  RegisterTable<7> extend_chop{};
  RegisterTable<12> disparity{};
  RegisterTable<30> gpm{};
  dpu_scheme_config scheme{};
};

std::span<const LayoutRow<DpuItem>> dpu_item_layout();
std::span<const LayoutRow<d2c_cfg_item>> d2c_item_layout();
std::span<const LayoutRow<ir_pre_cfg_item>> ir_pre_item_layout();

// Writes the items of one section into an image and closes it with its header.
class ConfigSectionWriter {
 public:
  ConfigSectionWriter(std::span<std::uint8_t> image, const ConfigSection& section)
      : room_(image.subspan(section.offset, section.room)), section_(section) {}

  // The bytes of the next item; there must be room for it. Its digest comes last, over digested().
  std::span<std::uint8_t> next_item();
  std::span<const std::uint8_t> digested(std::span<const std::uint8_t> item) const {
    return item.subspan(section_.digest_first, section_.digest_size);
  }

  void close(std::uint32_t stamp);

 private:
  std::span<std::uint8_t> room_;
  ConfigSection section_;
  std::uint32_t count_ = 0;
};

void write_item(const DpuItem& item, std::span<std::uint8_t> to);
void write_item(const d2c_cfg_item& item, std::span<std::uint8_t> to);
void write_item(const ir_pre_cfg_item& item, std::span<std::uint8_t> to);

}  // namespace vq3900

#endif
