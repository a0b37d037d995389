// How reading a configuration ended.
#ifndef VQ3900_CONFIG_LOAD_RESULT_H
#define VQ3900_CONFIG_LOAD_RESULT_H

#include <cstdint>
#include <string>

namespace vq3900 {

struct LoadResult {
  std::int32_t code = 0;
  std::string text = {};  // for standard error, without its line end
};

}  // namespace vq3900

#endif
