// The register tables as the library is loaded: every address, mask and value written out again.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

#include "support/elements.h"
#include "support/little_endian_memory.h"

namespace vq3900::test {
namespace {

constexpr std::uint32_t kAll = 0xFFFFFFFF;

// No fixture: these tests look at what loading leaves, and change nothing.
template <std::size_t Count, typename Copy>
Elements copied(const Copy& copy) {
  Elements elements(Count, {0xEEEEEEEE, 0xEEEEEEEE, 0xEEEEEEEE});
  EXPECT_EQ(copy(elements.data(), Count), 0);
  return elements;
}

TEST(StartUpTables, ElementsAreThreeWordsWithoutGaps) {
  const DeRegElement_S elements[2]{{0x03020100, 0x07060504, 0x0B0A0908}, {0x0F0E0D0C, 0x13121110, 0x17161514}};
  ASSERT_EQ(sizeof elements, 24U);
  const Bytes bytes = turned_numbers(bytes_of(elements), {{6, 4}});
  for (std::size_t i = 0; i < bytes.size(); ++i)
    EXPECT_EQ(bytes[i], i);
}

TEST(StartUpTables, BasicControl) {
  EXPECT_EQ(copied<5>(de_copy_basic_d2c_d2d_ctrl_register_table),
            (Elements{
                {0x50001000, 0x00013030, 0x00000000},
                {0x50001028, 0x0000C400, 0x00000000},
                {0x50001200, 0xDCFFFFFF, 0x0C1800C0},
                {0x5000120C, 0x000000FF, 0x00000055},
                {0x5000188C, 0x0000000E, 0x00000000},
            }));
}

TEST(StartUpTables, D2dParameters) {
  EXPECT_EQ(copied<2>(de_copy_d2d_params_register_table),
            (Elements{{0x50001204, 0xFFFFFFFF, 0}, {0x50001208, 0xFFFFFFFF, 0}}));
}

TEST(StartUpTables, D2cParameters) {
  EXPECT_EQ(
      copied<12>(de_copy_d2c_params_register_table),
      consecutive(0x50001210, kAll, {0x20000000, 0, 0, 0x0393B6AB, 0, 0x20000000, 0, 0, 0, 0, 0x40000000, 0x0393B6AB}));
}

TEST(StartUpTables, Prefilter) {
  EXPECT_EQ(copied<18>(de_copy_prefilter_register_table),
            (Elements{
                {0x50001080, 0x1FFFFFFF, 0x01950034},
                {0x50001084, 0xFFFFFFFF, 0x21D3019C},
                {0x50001088, 0xFFFFFFFF, 0x1EEC5782},
                {0x5000108C, 0xFFFFFFFF, 0x06D78588},
                {0x50001090, 0xFFFFFFFF, 0x1870D763},
                {0x50001094, 0xFFFFFFFF, 0x25CAC26A},
                {0x50001098, 0xFFFFFFFF, 0x55555555},
                {0x5000109C, 0xFFFFFFFF, 0},
                {0x500010A0, 0xFFFFFFFF, 0},
                {0x500010A4, 0xFFFFFFFF, 0},
                {0x500010A8, 0xFFFFFFFF, 0},
                {0x500010AC, 0xFFFFFFFF, 0},
                {0x500010B0, 0xFFFFFFFF, 0},
                {0x500010B4, 0xFFFFFFFF, 0},
                {0x500010B8, 0xFFFFFFFF, 0},
                {0x500010BC, 0xFFFFFFFF, 0},
                {0x500010D0, 0x00FFFFFF, 0},
                {0x500010D4, 0xFFFFFFFF, 0},
            }));
}

TEST(StartUpTables, ExtendChop) {
  EXPECT_EQ(copied<7>(de_copy_extend_chop_register_table),
            (Elements{
                {0x50001070, 0x00FFFFFF, 0},
                {0x50001074, 0xFFFFFFFF, 0},
                {0x50001078, 0x0FFF0FFF, 0},
                {0x5000107C, 0x0FFF0FFF, 0},
                {0x500010C8, 0x0FFF0FFF, 0},
                {0x500010CC, 0x0FFF0FFF, 0},
                {0x500012D4, 0x0FFF0FFF, 0},
            }));
}

TEST(StartUpTables, Disparity) {
  EXPECT_EQ(copied<12>(de_copy_disp_calc_register_table),
            (Elements{
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
            }));
}

TEST(StartUpTables, GlobalPoints) {
  EXPECT_EQ(copied<30>(de_copy_gpm_register_table),
            joined({repeated(16, 0x50001300, 0x00FFFFFF, 0),
                    repeated(8, 0x50001340, 0xFFFFFFFF, 0xFFFFFFFF),
                    {{0x50001360, 0xFFFFFFFF, 0}, {0x50001364, 0xFFFFFFFF, 0}},
                    {{0x5000136C, 0xFFFFFFFF, 0}, {0x50001370, 0xFFFFFFFF, 0}},
                    {{0x50001374, 0x0000011F, 0x00000003}, {0x50001368, 0x00FFFFFF, 0x00FC0040}}}));
}

TEST(StartUpTables, LastElementOfGlobalPointsIsOutOfAddressOrder) {
  const Elements elements = copied<30>(de_copy_gpm_register_table);
  EXPECT_EQ(elements[28].address, 0x50001374U);
  EXPECT_EQ(elements[29].address, 0x50001368U);
}

TEST(StartUpTables, FirstCopyOfGlobalPointStatusYields261ElementsOfValueZero) {
  const Elements elements = copied<261>(de_copy_gp_status_register_table);
  EXPECT_EQ(elements,
            joined({{{0x5000137C, 0xFFFFFFFF, 0},
                     {0x50001380, 0xFFFFFFFF, 0},
                     {0x50001384, 0xFFFFFFFF, 0},
                     {0x50001388, 0xFFFFFFFF, 0},
                     {0x5000138C, 0xFFFFFFFF, 0}},
                    repeated(256, 0x50001400, 0xFFFFFFFF, 0)}));
  EXPECT_EQ(elements[260].address, 0x500017FCU);
}

TEST(StartUpTables, RectifyControlHasCamera0First) {
  EXPECT_EQ(copied<3>(de_copy_rectify_ctrl_register_table),
            (Elements{{0x52080070, 0x0FFF041F, 0}, {0x52000070, 0x0FFF001F, 0}, {0x520000A0, 0x0000001E, 0}}));
}

// Both cameras' parameters lie alike in their blocks.
Elements rectify_parameters(std::uint32_t block) {
  return joined({repeated(9, block + 0x00, kAll, 0),
                 repeated(9, block + 0x30, kAll, 0),
                 {{block + 0x60, kAll, 0}, {block + 0x64, kAll, 0}, {block + 0x68, kAll, 0}, {block + 0x6C, kAll, 0}},
                 {{block + 0x78, 0x0FFF0FFF, 0}}});
}

TEST(StartUpTables, RectifyParametersAreCamera0s) {
  const Elements elements = copied<23>(de_copy_rectify_params_register_table);
  EXPECT_EQ(elements, rectify_parameters(0x52080000));
  EXPECT_EQ(elements[8].address, 0x52080020U);
  EXPECT_EQ(elements[17].address, 0x52080050U);
}

TEST(StartUpTables, Sbg2rParametersAreCamera1s) {
  EXPECT_EQ(copied<23>(de_copy_sbg2r_params_register_table), rectify_parameters(0x52000000));
}

Elements lut_info(std::uint32_t block) {
  return {{block + 0x74, 0x03FF03FF, 0},
          {block + 0x90, 0xFFFFFFFF, 0},
          {block + 0x94, 0xFFFFFFFF, 0},
          {block + 0x98, 0xFFFFFFFF, 0},
          {block + 0x9C, 0xFFFFFFFF, 0},
          {block + 0xD4, 0x03FF03FF, 0},
          {block + 0x70, 0x00000300, 0}};
}

TEST(StartUpTables, RectifyLutInfoOfEachCameraLiesInItsBlock) {
  const auto of_camera = [](std::int32_t camera) {
    return copied<7>([camera](DeRegElement_S* dst, std::uint8_t count) {
      return de_copy_rectify_lut_info_register_table(camera, dst, count);
    });
  };
  EXPECT_EQ(of_camera(0), lut_info(0x52080000));
  EXPECT_EQ(of_camera(1), lut_info(0x52000000));
}

TEST(StartUpTables, HeaderNamesTheirSizes) {
  EXPECT_EQ(VQ3900_BASIC_CTRL_REGISTERS, 5);
  EXPECT_EQ(VQ3900_D2D_REGISTERS, 2);
  EXPECT_EQ(VQ3900_D2C_REGISTERS, 12);
  EXPECT_EQ(VQ3900_PREFILTER_REGISTERS, 18);
  EXPECT_EQ(VQ3900_EXTEND_CHOP_REGISTERS, 7);
  EXPECT_EQ(VQ3900_DISP_CALC_REGISTERS, 12);
  EXPECT_EQ(VQ3900_GPM_REGISTERS, 30);
  EXPECT_EQ(VQ3900_GP_STATUS_REGISTERS, 261);
  EXPECT_EQ(VQ3900_RECTIFY_CTRL_REGISTERS, 3);
  EXPECT_EQ(VQ3900_RECTIFY_REGISTERS, 23);
  EXPECT_EQ(VQ3900_RECTIFY_LUT_INFO_REGISTERS, 7);
}

TEST(StartUpTables, PrefilterWordsAreThoseOfWindow5) {
  const Elements before = copied<18>(de_copy_prefilter_register_table);
  EXPECT_EQ(before[0].value & 0x00007FFF, 0x34U);  // size code
  EXPECT_EQ(before[0].value >> 16 & 0xF, 5U);      // window
  EXPECT_EQ(before[0].value >> 20 & 0xFF, 25U);    // its square
  EXPECT_EQ(before[0].value >> 28, 0U);            // the constant comes with the first conversion
}

}  // namespace
}  // namespace vq3900::test
