// The calibration image as files.
#include <algorithm>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "flash/factory_file.h"
#include "flash/image_build_api.h"
#include "platform/clock.h"
#include "platform/diagnostics.h"
#include "platform/file.h"
#include "regs/steps.h"

namespace {

using vq3900::OutputFile;
using vq3900::print_out;
using vq3900::printable;

constexpr int32_t kCannotOpen = -1;
constexpr int32_t kOtherSize = -5;
constexpr int32_t kNumbersDiffer = -6;

int32_t cannot_open(const char* path) {
  print_out("error: create or open file failed, path=%s \n", printable(path));
  return kCannotOpen;
}

// A side file's name: the image's without an extension of four characters, and an ending of its own.
std::string side_file(std::string_view path, const char* ending) {
  constexpr std::size_t kExtension = 4;
  path.remove_suffix(std::min(kExtension, path.size()));
  return std::string{path} + ending;
}

bool has_bin_extension(const char* path) {
  const std::string_view text = path == nullptr ? "" : path;
  const std::size_t dot = text.rfind('.');
  return dot != std::string_view::npos && text.substr(dot + 1) == "bin";
}

// A side file, created when it turns out to be wanted.
class SideFile {
 public:
  explicit SideFile(std::string path) : path_(std::move(path)) {}

  int32_t create() {
    if (file_) return VQ3900_OK;
    file_.emplace(path_.c_str());
    return file_->is_open() ? VQ3900_OK : cannot_open(path_.c_str());
  }

  int32_t write(std::span<const uint8_t> bytes) {
    return !file_ || (file_->write(bytes) && file_->close()) ? VQ3900_OK : cannot_open(path_.c_str());
  }

 private:
  std::string path_;
  std::optional<OutputFile> file_;
};

int32_t add_factory_file(const char* path, vq3900::FactoryFile& factory) {
  if (path != nullptr && factory.has(path)) return VQ3900_OK;
  const std::optional<std::string> bytes = vq3900::read_file(path, vq3900::kFactoryFileSize);
  if (!bytes) return cannot_open(path);
  using Added = vq3900::FactoryFile::Added;
  switch (factory.add(path, *bytes)) {
    case Added::kYes:
      break;
    case Added::kNoRoom:
      return vq3900::too_many_records({}, vq3900::kFactoryFileSection.name);
    case Added::kOtherSize:
      print_out("error: factory align file size differs, path=%s \n", path);
      return kOtherSize;
  }
  return VQ3900_OK;
}

int32_t load_and_convert(const char* config, const char* calib, vq3900::ConvertedCalibration& converted) {
  if (const int32_t code = load_input_configs_path(config); code != VQ3900_OK) {
    print_out("error: load_input_configs, path=%s \n", printable(config));
    return code;
  }
  const int32_t code =
      cams_calibration_params_to_register_converter(calib, &converted.rect, &converted.d2c, &converted.depth);
  if (code != VQ3900_OK) {
    print_out("error: cams_calibration_params_to_register_converter for \"%s\"\n", printable(config));
  }
  return code;
}

int32_t build(const CalibFlashInput_S& input, const char* path) {
  OutputFile main{path};
  if (!main.is_open()) return cannot_open(path);
  SideFile lut_file{side_file(path, "_lut_section.bin")};
  SideFile factory_side{side_file(path, "_factory_align_section.bin")};
  const std::span configs{input.config_files, input.config_file_num};
  const std::span calibs{input.calib_params_files, input.calib_params_file_num};
  const bool wants_factory = !calibs.empty() && has_bin_extension(calibs.front());
  if (wants_factory && factory_side.create() != VQ3900_OK) return kCannotOpen;

  vq3900::ImageBuild image{input, {}};
  vq3900::FactoryFile factory;
  for (std::size_t i = 0; i < configs.size(); ++i) {
    image.prepare_next();
    vq3900::ConvertedCalibration converted;
    const int32_t code =
        vq3900::run_steps([&] { return load_and_convert(configs[i], calibs[i], converted); },
                          [&] { return image.add(converted, [&] { return lut_file.create(); }); },
                          [&] { return wants_factory ? add_factory_file(calibs[i], factory) : VQ3900_OK; });
    if (code != VQ3900_OK) return code;
  }

  const vq3900::HeaderStamp stamp = vq3900::header_stamp(vq3900::calendar_time());
  if (!main.write(image.finish_main(stamp)) || !main.close()) return cannot_open(path);
  return vq3900::run_steps(
      [&] {
        std::vector<uint8_t> luts(image.lut_size());
        image.finish_luts(stamp, luts);
        return lut_file.write(luts);
      },
      [&] { return factory_side.write(factory.finish(stamp)); });
}

}  // namespace

int32_t gen_calib_flash_file_de(const CalibFlashInput_S* input, const char* path) try {
  const vq3900::OptimizedD2dRelease release;
  if (input == nullptr) return VQ3900_ERROR_ARGUMENT;
  if (input->calib_params_file_num != input->config_file_num) {
    print_out("error: params error, calib_params_file_num != config_file_num\n");
    return kNumbersDiffer;
  }
  const bool none = input->config_file_num == 0;
  if (!none && (input->config_files == nullptr || input->calib_params_files == nullptr)) return VQ3900_ERROR_ARGUMENT;
  return build(*input, path);
} catch (const std::exception&) {  // no memory
  return VQ3900_ERROR_ARGUMENT;
}
