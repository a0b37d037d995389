// Images of every kind, read and described by the tool.
#include "fuzz_support.h"
#include "image_reader.h"
#include "image_report.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto image = vq3900::tool::read_image({data, size});
  if (image) static_cast<void>(image->good());
  return 0;
}
