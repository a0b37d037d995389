// Calibration files of other programs, as the tool imports them; the first byte says how many files there are.
#include <string>

#include "calib/calib_import.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vq3900;
  fuzz::Input input{data, size};
  const bool pair = (input.take<std::uint8_t>() & 1) != 0;
  const std::string first = fuzz::own_path(".a.yml");
  const std::string second = fuzz::own_path(".b.yml");
  const std::size_t half = pair ? input.rest().size() / 2 : input.rest().size();
  fuzz::write_file(first, input.rest().first(half));
  fuzz::write_file(second, input.rest().subspan(half));
  tool::ImportOptions options;
  options.size = tool::ImageSize{640, 480};
  try {
    tool::import_calibration(pair ? first + "," + second : first, options);
  } catch (const tool::CalibrationError&) {  // what a bad file is answered with
  }
  return 0;
}
