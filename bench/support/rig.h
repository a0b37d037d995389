// A calibrated rig and the configuration that goes with it, for images of any size.
#ifndef VQ3900_BENCH_SUPPORT_RIG_H
#define VQ3900_BENCH_SUPPORT_RIG_H

#include "vq3900_depth_engine.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vq3900::bench {

struct ImageSize {
  int width;
  int height;
};

// k1, k2, k3, k4, k5, k6, p1, p2: rational and tangential.
inline constexpr std::array<float, 8> kDistortion{0.31F, -0.22F, 0.041F, 0.58F, -0.19F, 0.012F, 0.00042F, -0.00027F};
inline constexpr std::array<float, 9> kRotation{
    0.99999F, 0.0023F, 0.0004F, -0.0023F, 0.9999F, 0.0141F, -0.0003F, -0.0141F, 0.9999F};
inline constexpr std::array<float, 3> kTranslation{-50.1F, 0.4F, -0.9F};

inline DeCalibRecordCamera_S record_camera(const ImageSize& size, float shift) {
  DeCalibRecordCamera_S camera{};
  camera.width = static_cast<float>(size.width);
  camera.height = static_cast<float>(size.height);
  camera.fx = 0.62F * camera.width;
  camera.fy = 0.61F * camera.width;
  camera.cx = 0.5F * camera.width + shift;
  camera.cy = 0.5F * camera.height - shift;
  std::copy(kDistortion.begin(), kDistortion.end(), camera.distortion);
  return camera;
}

inline DeCalibRecord_S record_of(const ImageSize& size) {
  DeCalibRecord_S record{};
  record.left_ir = record_camera(size, 3.5F);
  record.right_ir = record_camera(size, -4.25F);
  record.rgb = record_camera(size, 0);
  std::copy(kRotation.begin(), kRotation.end(), record.ir_rotation);
  std::copy(kTranslation.begin(), kTranslation.end(), record.ir_translation);
  std::copy(kRotation.begin(), kRotation.end(), record.rgb_rotation);
  std::copy(kTranslation.begin(), kTranslation.end(), record.rgb_translation);
  return record;
}

// With a polynomial, with a LUT of that many sample bits, or both. Configurations of other numbers have other sizes of
// the rectified image, so that their records are not shared.
inline std::string configuration_text(int sample_bits, int number = 0, int distort_type = 2) {
  return "[basic]\nbaseline = -50.0\nref_dist = 1000.0\ncam_type = 2\nmirrored = 0\n"
         "[rectify]\ndistort_type = " +
         std::to_string(distort_type) + "\nrotate_type = 0\ndst_focal_scale = 0." + std::to_string(99 - number) +
         "\ndst_res_fixed = 0\nlut_sample_bit = " + std::to_string(sample_bits) +
         "\nlut_extend_ratio = 0.0\n"
         "[d2d]\ndisp_offset = 0.0\ninvalid_disp = 0\nd2d_params_unit = 1.0\n"
         "[d2c]\nclip_left_w_depth = 0\nclip_top_h_depth = 0\nclip_right_w_depth = 0\nclip_bottom_h_depth = 0\n"
         "depth_scale = 1.0\nclip_left_w_valid = 0\nclip_top_h_valid = 0\nclip_right_w_valid = 0\n"
         "clip_bottom_h_valid = 0\nvalid_scale = 1.0\nclip_left_w_rgb = 0\nclip_top_h_rgb = 0\nclip_right_w_rgb = 0\n"
         "clip_bottom_h_rgb = 0\n";
}

// An image of some configurations, and the memory that it is built in.
class CalibImage {
 public:
  CalibImage(const ImageSize& size, int sample_bits, int configurations) : record_(record_of(size)) {
    set_calib_temp(31.5F, 32.0F, 35.0F);
    for (int i = 0; i < configurations; ++i)
      texts_.push_back(configuration_text(sample_bits, i));
    for (const std::string& text : texts_)
      configurations_.push_back(text.c_str());
    records_.assign(texts_.size(), &record_);
    input_.config_files = configurations_.data();
    input_.config_file_num = static_cast<std::uint8_t>(configurations);
    input_.calib_records = records_.data();
    input_.calib_record_num = static_cast<std::uint8_t>(configurations);
  }
  CalibImage(const CalibImage&) = delete;
  CalibImage& operator=(const CalibImage&) = delete;

  std::uint32_t image_bytes() const {
    std::uint32_t bytes = 0;
    get_file_buffer_size(&input_, &bytes);
    return bytes;
  }
  std::uint32_t lut_bytes() {
    std::uint32_t bytes = 0;
    get_lut_section_buffer_size(&input_, &bytes, &log_);
    return bytes;
  }

  std::int32_t build(std::vector<std::uint32_t>& image, std::vector<std::uint8_t>& lut) {
    return gen_calib_flash_param_de(&input_,
                                    image.data(),
                                    &log_,
                                    static_cast<std::int64_t>(image.size() * sizeof image[0]),
                                    lut.data(),
                                    static_cast<int>(lut.size()),
                                    1700000000,
                                    nullptr,
                                    0);
  }

 private:
  DeCalibRecord_S record_;
  std::vector<std::string> texts_;
  std::vector<const char*> configurations_;
  std::vector<const DeCalibRecord_S*> records_;
  CalibFlashInput_S input_{};
  DeLogCallback log_ = [](const char*) {};
};

}  // namespace vq3900::bench

#endif
