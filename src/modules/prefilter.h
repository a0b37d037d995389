// The prefilter block: window, coefficient words and image size.
#ifndef VQ3900_MODULES_PREFILTER_H
#define VQ3900_MODULES_PREFILTER_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>
#include <span>

#include "modules/register_field.h"
#include "state/block_state.h"
#include "state/register_tables.h"

namespace vq3900 {

struct ImageSize {
  std::uint16_t width;
  std::uint16_t height;
};

bool prefilter_size_supported(std::int32_t size);

// The size of the prefilter's image, from resolution, rotation and upsampling of the basic block.
ImageSize prefilter_image_size(const DeBasicParams_S& basic);

// What a window size brings with it: a code beside the size, and the words of the coefficient registers.
struct CoefficientSet {
  std::uint8_t size;
  std::uint32_t size_code;
  std::array<std::uint32_t, 15> words;
};

std::span<const Field<PrefilterState>> prefilter_fields();
std::span<const Field<CoefficientSet>> coefficient_set_fields();

void encode_prefilter(const PrefilterState& prefilter, RegisterTables& tables);
void decode_prefilter(const RegisterTables& tables, PrefilterState& prefilter);

}  // namespace vq3900

#endif
