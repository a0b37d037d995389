// Building calibration images into a folder of the test's own.
#ifndef VQ3900_TESTS_SUPPORT_CALIB_FILE_FIXTURE_H
#define VQ3900_TESTS_SUPPORT_CALIB_FILE_FIXTURE_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/capture.h"
#include "support/engine_fixture.h"

namespace vq3900::test {

inline constexpr const char* kMainName = "image.bin";
inline constexpr const char* kLutName = "image_lut_section.bin";
inline constexpr const char* kFactoryName = "image_factory_align_section.bin";

class CalibFile : public EngineTest {
 protected:
  CalibFile() { give_temperatures(); }

  // Writes a configuration, config1.ini and so on, and answers its path.
  std::string config(const CalibSettings& changes = {}) {
    return folder_.write("config" + std::to_string(++configs_) + ".ini", plain_text(changes));
  }
  std::string calib(const std::string& name, const std::string& bytes) const { return folder_.write(name, bytes); }

  Outcome build(const CalibFlashInput_S& record) const {
    return outcome_of([&] { return gen_calib_flash_file_de(&record, path().c_str()); });
  }
  Outcome build(CalibInput& input) const { return build(input.record()); }

  std::string path(const char* name = kMainName) const { return folder_.path(name); }
  ImageBytes main_image() const { return bytes_of_file(path(kMainName)); }
  ImageBytes lut_file() const { return bytes_of_file(path(kLutName)); }
  ImageBytes factory_file() const { return bytes_of_file(path(kFactoryName)); }

  void expect_counts(std::uint32_t rectify, std::uint32_t d2c, std::uint32_t d2d) const {
    const ImageBytes image = main_image();
    expect_flash_section(image, flash::kRectify, rectify);
    expect_flash_section(image, flash::kD2c, d2c);
    expect_flash_section(image, flash::kD2d, d2d);
  }

  // Gives every register that goes into an image a value of its own.
  static void number_registers() {
    std::uint32_t value = 0x01020304;
    RegisterTables& tables = engine().registers;
    for (auto* const table : {&tables.rectify[0], &tables.rectify[1]}) {
      for (DeRegElement_S& element : *table)
        element.value = value += 0x01010101;
    }
    for (DeRegElement_S& element : tables.d2c)
      element.value = value += 0x01010101;
    for (DeRegElement_S& element : tables.d2d)
      element.value = value += 0x01010101;
  }

  TempFolder folder_;

 private:
  int configs_ = 0;
};

}  // namespace vq3900::test

#endif
