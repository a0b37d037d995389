// The register tables of all blocks: their start-up contents, and the struct that holds their current values.
#ifndef VQ3900_STATE_REGISTER_TABLES_H
#define VQ3900_STATE_REGISTER_TABLES_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vq3900 {

template <std::size_t Count>
using RegisterTable = std::array<DeRegElement_S, Count>;

// Register blocks of the two cameras' rectifiers.
inline constexpr std::uint32_t kCamera0Block = 0x52080000;
inline constexpr std::uint32_t kCamera1Block = 0x52000000;

// Address, mask and value of every register as the device comes up.
namespace startup {

template <std::size_t Count>
constexpr void fill(RegisterTable<Count>& table, std::size_t first, std::size_t last, std::uint32_t address,
                    std::uint32_t mask, std::uint32_t value = 0) {
  for (std::size_t i = first; i <= last; ++i, address += 4)
    table[i] = {address, mask, value};
}

inline constexpr RegisterTable<VQ3900_BASIC_CTRL_REGISTERS> kBasicCtrl{{
    {0x50001000, 0x00013030, 0x00000000},
    {0x50001028, 0x0000C400, 0x00000000},
    {0x50001200, 0xDCFFFFFF, 0x0C1800C0},
    {0x5000120C, 0x000000FF, 0x00000055},
    {0x5000188C, 0x0000000E, 0x00000000},
}};

inline constexpr RegisterTable<VQ3900_D2D_REGISTERS> kD2d{{
    {0x50001204, 0xFFFFFFFF, 0},
    {0x50001208, 0xFFFFFFFF, 0},
}};

inline constexpr RegisterTable<VQ3900_D2C_REGISTERS> kD2c{{
    {0x50001210, 0xFFFFFFFF, 0x20000000},
    {0x50001214, 0xFFFFFFFF, 0},
    {0x50001218, 0xFFFFFFFF, 0},
    {0x5000121C, 0xFFFFFFFF, 0x0393B6AB},
    {0x50001220, 0xFFFFFFFF, 0},
    {0x50001224, 0xFFFFFFFF, 0x20000000},
    {0x50001228, 0xFFFFFFFF, 0},
    {0x5000122C, 0xFFFFFFFF, 0},
    {0x50001230, 0xFFFFFFFF, 0},
    {0x50001234, 0xFFFFFFFF, 0},
    {0x50001238, 0xFFFFFFFF, 0x40000000},
    {0x5000123C, 0xFFFFFFFF, 0x0393B6AB},
}};

inline constexpr auto kPrefilter = [] {
  RegisterTable<VQ3900_PREFILTER_REGISTERS> table{{
      {0x50001080, 0x1FFFFFFF, 0x01950034},
      {0x50001084, 0xFFFFFFFF, 0x21D3019C},
      {0x50001088, 0xFFFFFFFF, 0x1EEC5782},
      {0x5000108C, 0xFFFFFFFF, 0x06D78588},
      {0x50001090, 0xFFFFFFFF, 0x1870D763},
      {0x50001094, 0xFFFFFFFF, 0x25CAC26A},
      {0x50001098, 0xFFFFFFFF, 0x55555555},
  }};
  fill(table, 7, 15, 0x5000109C, 0xFFFFFFFF);
  table[16] = {0x500010D0, 0x00FFFFFF, 0};
  table[17] = {0x500010D4, 0xFFFFFFFF, 0};
  return table;
}();

inline constexpr RegisterTable<VQ3900_EXTEND_CHOP_REGISTERS> kExtendChop{{
    {0x50001070, 0x00FFFFFF, 0},
    {0x50001074, 0xFFFFFFFF, 0},
    {0x50001078, 0x0FFF0FFF, 0},
    {0x5000107C, 0x0FFF0FFF, 0},
    {0x500010C8, 0x0FFF0FFF, 0},
    {0x500010CC, 0x0FFF0FFF, 0},
    {0x500012D4, 0x0FFF0FFF, 0},
}};

inline constexpr RegisterTable<VQ3900_DISP_CALC_REGISTERS> kDispCalc{{
    {0x500010E0, 0x1FFF1FFF, 0x1F5602AA},
    {0x500010E4, 0xFFFFFFFF, 0},
    {0x500012C0, 0xFFFFFFFF, 0x40400000},
    {0x500012C4, 0xFFFFFFFF, 0},
    {0x500012C8, 0xFFFFFFFF, 0},
    {0x500012CC, 0xFFFFFFFF, 0},
    {0x500012D0, 0xFFFFFFFF, 0},
    {0x500012E0, 0xFFFFFFFF, 0},
    {0x500012E4, 0xFFFFFFFF, 0},
    {0x50001008, 0x00010F00, 0},
    {0x50001030, 0x1FFFFFF0, 0},
    {0x50001034, 0xFFFFFFFF, 0x00320000},
}};

inline constexpr auto kGpm = [] {
  RegisterTable<VQ3900_GPM_REGISTERS> table{};
  fill(table, 0, 15, 0x50001300, 0x00FFFFFF);
  fill(table, 16, 23, 0x50001340, 0xFFFFFFFF, 0xFFFFFFFF);
  table[24] = {0x50001360, 0xFFFFFFFF, 0};
  table[25] = {0x50001364, 0xFFFFFFFF, 0};
  table[26] = {0x5000136C, 0xFFFFFFFF, 0};
  table[27] = {0x50001370, 0xFFFFFFFF, 0};
  table[28] = {0x50001374, 0x0000011F, 0x00000003};
  table[29] = {0x50001368, 0x00FFFFFF, 0x00FC0040};  // the device takes this register last, out of address order
  return table;
}();

inline constexpr auto kGpStatus = [] {
  RegisterTable<VQ3900_GP_STATUS_REGISTERS> table{};
  fill(table, 0, 4, 0x5000137C, 0xFFFFFFFF);
  fill(table, 5, 260, 0x50001400, 0xFFFFFFFF);
  return table;
}();

inline constexpr RegisterTable<VQ3900_RECTIFY_CTRL_REGISTERS> kRectifyCtrl{{
    {kCamera0Block + 0x70, 0x0FFF041F, 0},
    {kCamera1Block + 0x70, 0x0FFF001F, 0},
    {kCamera1Block + 0xA0, 0x0000001E, 0},
}};

constexpr RegisterTable<VQ3900_RECTIFY_REGISTERS> rectify(std::uint32_t block) {
  RegisterTable<VQ3900_RECTIFY_REGISTERS> table{};
  fill(table, 0, 8, block + 0x00, 0xFFFFFFFF);
  fill(table, 9, 17, block + 0x30, 0xFFFFFFFF);
  fill(table, 18, 21, block + 0x60, 0xFFFFFFFF);
  table[22] = {block + 0x78, 0x0FFF0FFF, 0};
  return table;
}

constexpr RegisterTable<VQ3900_RECTIFY_LUT_INFO_REGISTERS> rectify_lut_info(std::uint32_t block) {
  RegisterTable<VQ3900_RECTIFY_LUT_INFO_REGISTERS> table{};
  table[0] = {block + 0x74, 0x03FF03FF, 0};
  fill(table, 1, 4, block + 0x90, 0xFFFFFFFF);
  table[5] = {block + 0xD4, 0x03FF03FF, 0};
  table[6] = {block + 0x70, 0x00000300, 0};
  return table;
}

}  // namespace startup

struct RegisterTables {
  RegisterTable<VQ3900_BASIC_CTRL_REGISTERS> basic_ctrl = startup::kBasicCtrl;
  RegisterTable<VQ3900_D2D_REGISTERS> d2d = startup::kD2d;
  RegisterTable<VQ3900_D2C_REGISTERS> d2c = startup::kD2c;
  RegisterTable<VQ3900_PREFILTER_REGISTERS> prefilter = startup::kPrefilter;
  RegisterTable<VQ3900_EXTEND_CHOP_REGISTERS> extend_chop = startup::kExtendChop;
  RegisterTable<VQ3900_DISP_CALC_REGISTERS> disp_calc = startup::kDispCalc;
  RegisterTable<VQ3900_GPM_REGISTERS> gpm = startup::kGpm;
  RegisterTable<VQ3900_GP_STATUS_REGISTERS> gp_status = startup::kGpStatus;
  RegisterTable<VQ3900_RECTIFY_CTRL_REGISTERS> rectify_ctrl = startup::kRectifyCtrl;
  std::array<RegisterTable<VQ3900_RECTIFY_REGISTERS>, 2> rectify{startup::rectify(kCamera0Block),
                                                                 startup::rectify(kCamera1Block)};
  std::array<RegisterTable<VQ3900_RECTIFY_LUT_INFO_REGISTERS>, 2> rectify_lut_info{
      startup::rectify_lut_info(kCamera0Block), startup::rectify_lut_info(kCamera1Block)};
};

}  // namespace vq3900

#endif
