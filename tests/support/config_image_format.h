// What the configuration image is made of, and the registers of the stereo sample, worked out by hand from its keys.
#ifndef VQ3900_TESTS_SUPPORT_CONFIG_IMAGE_FORMAT_H
#define VQ3900_TESTS_SUPPORT_CONFIG_IMAGE_FORMAT_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "support/config_images.h"

namespace vq3900::test {

struct SectionFormat {
  const char* name;
  std::size_t offset, room;
  std::uint32_t magic, address, item_magic, item_size;
  std::size_t digested;  // bytes of an item, from 16 on
};

inline constexpr SectionFormat kDpu{"dpu", 0, 8192, 0x46447306, 0x14000, 0x46446103, 984, 32};
inline constexpr SectionFormat kD2c{"d2c", 8192, 4096, 0x46447307, 0x16000, 0x46446104, 72, 36};
inline constexpr SectionFormat kIrPre{"ir_pre", 12288, 4096, 0x4644730E, 0x17000, 0x4644610B, 156, 20};

inline ImageBytes item_of(const ImageBytes& image, const SectionFormat& format, std::size_t index) {
  return part(image, format.offset + 36 + index * format.item_size, format.item_size);
}

struct Register {
  std::uint32_t address, value;
};

inline constexpr std::array<Register, 5> kStereoControl{{{0x50001000, 0x00010000},    // camera mode 1
                                                         {0x50001028, 0x00000400},    // smoothing
                                                         {0x50001200, 0x8C0C0060},    // 96 of 192 rows, recovery mode 2
                                                         {0x5000120C, 0x0000004D},    // 0.3 * 256
                                                         {0x5000188C, 0x00000000}}};  // depth unit 0.1
inline constexpr std::array<Register, 3> kStereoRectifyCtrl{
    {{0x52080070, 0x0030040B}, {0x52000070, 0x0030000B}, {0x520000A0, 0x00000002}}};
inline constexpr std::array<Register, 18> kStereoPrefilter{{{0x50001080, 0x15197300},
                                                            {0x50001084, 0x10D97EFA},
                                                            {0x50001088, 0x12F90ED0},
                                                            {0x5000108C, 0x124A2A95},
                                                            {0x50001090, 0x12F9925A},
                                                            {0x50001094, 0x0DA35BBF},
                                                            {0x50001098, 0x01F0E01E},
                                                            {0x5000109C, 0x11BD10E5},
                                                            {0x500010A0, 0x07C38F18},
                                                            {0x500010A4, 0x0AB80EFF},
                                                            {0x500010A8, 0x1DD2BEC4},
                                                            {0x500010AC, 0x11059EF7},
                                                            {0x500010B0, 0x05131DFB},
                                                            {0x500010B4, 0x10420E02},
                                                            {0x500010B8, 0x260DE270},
                                                            {0x500010BC, 0x2F684BDA},
                                                            {0x500010D0, 0x00500320},    // 1280 x 800
                                                            {0x500010D4, 0x000FA000}}};  // their product
inline constexpr std::array<Register, 7> kStereoExtendChop{{{0x50001070, 0x00560330},    // 1376 x 816
                                                            {0x50001074, 0x000FA000},
                                                            {0x50001078, 0x00400020},
                                                            {0x5000107C, 0x00080008},
                                                            {0x500010C8, 0x00400020},
                                                            {0x500010CC, 0x00080008},
                                                            {0x500012D4, 0x00400020}}};
inline constexpr std::array<Register, 12> kStereoDisparity{
    {{0x500010E0, 0x1F5602AA},  // -0.166, 0.666
     {0x500010E4, 0x02000015},  // 0.5, 0.0205
     {0x500012C0, 0x4040C140},
     {0x500012C4, 0x20010040},
     {0x500012C8, 0x9918283C},
     {0x500012CC, 0x89578384},
     {0x500012D0, 0x106A444C},
     {0x500012E0, 0x80200614},
     {0x500012E4, 0x00000F05},
     {0x50001008, 0x00010500},
     {0x50001030, 0x0BFC0640},  // window 11, disparity -4, 10 * 10
     {0x50001034, 0x80320000}}};
inline constexpr std::array<Register, 30> kStereoGpm{
    {{0x50001300, 0x001E00A0}, {0x50001304, 0x00460320}, {0x50001308, 0x001E00A0}, {0x5000130C, 0x00460320},
     {0x50001310, 0x001E00A0}, {0x50001314, 0x00460320}, {0x50001318, 0x001E00A0}, {0x5000131C, 0x00460320},
     {0x50001320, 0x00064064}, {0x50001324, 0x00064064}, {0x50001328, 0x0012C12C}, {0x5000132C, 0x0012C12C},
     {0x50001330, 0x001F41F4}, {0x50001334, 0x001F41F4}, {0x50001338, 0x002BC2BC}, {0x5000133C, 0x002BC2BC},
     {0x50001340, 0x00040001}, {0x50001344, 0x00400010}, {0x50001348, 0x00040001}, {0x5000134C, 0x00400010},
     {0x50001350, 0x00000000}, {0x50001354, 0x00000000}, {0x50001358, 0x00000000}, {0x5000135C, 0x00000000},
     {0x50001360, 0x84030018}, {0x50001364, 0x0000C0C8}, {0x5000136C, 0x00006420}, {0x50001370, 0x00000000},
     {0x50001374, 0x00000003}, {0x50001368, 0x00FC0040}}};

}  // namespace vq3900::test

#endif
