// What the library made of a calibration.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <vector>

#include "calib/calib_report.h"
#include "calib/rectified_view.h"
#include "modules/fixed_point.h"
#include "register_blocks.h"
#include "register_report.h"

namespace vq3900::tool {

namespace {

using nlohmann::ordered_json;

constexpr std::array<std::string_view, 6> kTables{
    "d2d_params", "d2c_params", "rectify_params", "sbg2r_params", "rectify_lut_info_0", "rectify_lut_info_1"};

template <std::size_t Count>
std::vector<double> widened(const float (&values)[Count]) {
  std::vector<double> wide;
  std::transform(std::begin(values), std::end(values), std::back_inserter(wide), widen);
  return wide;
}

std::string intrinsic_text(const char* name, const DeCameraIntrinsic_S& camera) {
  return fmt::format("  {:<14}{}x{}, fx {:.3f}, fy {:.3f}, cx {:.3f}, cy {:.3f}\n",
                     name,
                     camera.width,
                     camera.height,
                     camera.fx,
                     camera.fy,
                     camera.cx,
                     camera.cy);
}

ordered_json intrinsic_json(const DeCameraIntrinsic_S& camera) {
  return {{"width", camera.width},
          {"height", camera.height},
          {"fx", camera.fx},
          {"fy", camera.fy},
          {"cx", camera.cx},
          {"cy", camera.cy}};
}

std::string view_text(const char* name, const RectifiedView& view, const DeCameraIntrinsic_S& unrectified) {
  return fmt::format("rectification, {}\n", name) + intrinsic_text("unrectified", unrectified) +
         intrinsic_text("rectified", view.output) +
         fmt::format("  rotation by {:.3f} degrees\n", degrees_of(view.rotation)) + rotation_text(view.rotation.m, 4);
}

ordered_json view_json(const RectifiedView& view, const DeCameraIntrinsic_S& unrectified) {
  return {{"unrectified", intrinsic_json(unrectified)},
          {"rectified", intrinsic_json(view.output)},
          {"rotation", view.rotation.m},
          {"rotation_degrees", degrees_of(view.rotation)}};
}

std::string rows_text(const CalibrationRun& run) {
  const RowCheck rows = check_rows(run);
  return fmt::format(
      "rows\n"
      "  a point's rows in the two rectified images differ by at most {:.4f} pixels\n"
      "  output pixels come from up to {:.1f} rows above and {:.1f} rows below their own\n",
      rows.largest_difference,
      rows.rows_above,
      rows.rows_below);
}

std::string lut_text(const char* name, const LutGrid& lut) {
  return fmt::format("  {:<14}{}x{} samples, every {} pixels from ({}, {})\n",
                     name,
                     lut.info.lut_width,
                     lut.info.lut_height,
                     1U << lut.info.sample_rate_bit,
                     static_cast<std::int32_t>(lut.info.lut_x_start),
                     static_cast<std::int32_t>(lut.info.lut_y_start));
}

ordered_json lut_json(const LutGrid& lut) {
  return {{"width", lut.info.lut_width},
          {"height", lut.info.lut_height},
          {"step", 1U << lut.info.sample_rate_bit},
          {"x_start", static_cast<std::int32_t>(lut.info.lut_x_start)},
          {"y_start", static_cast<std::int32_t>(lut.info.lut_y_start)}};
}

std::string d2c_text(const CalibrationRun& run) {
  if (run.calibration.rgb.width == 0) return "depth to colour (D2C): no colour camera\n";
  std::string text = "depth to colour (D2C)\n" + intrinsic_text("depth", run.d2c.depth) +
                     intrinsic_text("valid area", run.d2c.valid) + intrinsic_text("colour", run.d2c.color) +
                     "  rotation from the rectified left camera\n" + rotation_text(widened(run.d2c.rotation), 4);
  text += fmt::format("  translation   {:.3f}, {:.3f}, {:.3f} mm\n",
                      run.d2c.translation[0],
                      run.d2c.translation[1],
                      run.d2c.translation[2]);
  if (run.unit_in_rotation) {
    text += fmt::format("  the rotation carries the depth unit of {:g} mm\n", run.depth.d2d_params_unit);
  } else if (run.depth.d2d_params_unit != 1.0F) {
    text += fmt::format("  note: depth is in units of {:g} mm and the translation in mm; see d2d_params_unit_in_R_en\n",
                        run.depth.d2d_params_unit);
  }
  return text;
}

std::string d2d_text(const CalibrationRun& run) {
  const DepthCalcParams_S& depth = run.depth;
  return fmt::format(
      "disparity to depth (D2D)\n"
      "  baseline      {:.4f} units, {:.3f} mm\n"
      "  focal length  {:.3f} pixels\n"
      "  depth unit    {:g} mm\n"
      "  depth         {}, reference distance {:g} units\n"
      "  disparity     offset {:g}, {} stands for none\n"
      "  depth of a disparity of one pixel: {:.1f} units\n",
      depth.baseline,
      widen(depth.baseline) * widen(depth.d2d_params_unit),
      depth.focal_length,
      depth.d2d_params_unit,
      depth.depth_mode == 0 ? "relative to a plane" : "absolute",
      depth.ref_dist,
      depth.disp_offset,
      depth.invalid_disp,
      std::fabs(widen(depth.baseline) * widen(depth.focal_length)));
}

ordered_json results_json(const CalibrationRun& run) {
  const RowCheck rows = check_rows(run);
  ordered_json report;
  report["left"] = view_json(left_view(run), run.rectification.cam1);
  report["right"] = view_json(right_view(run), run.rectification.cam0);
  report["rows"] = {
      {"largest_difference", rows.largest_difference}, {"above", rows.rows_above}, {"below", rows.rows_below}};
  report["lut"] = nullptr;
  if (run.has_lut()) report["lut"] = {{"left", lut_json(run.luts[1])}, {"right", lut_json(run.luts[0])}};
  report["d2c"] = nullptr;
  if (run.calibration.rgb.width != 0) {
    report["d2c"] = {{"depth", intrinsic_json(run.d2c.depth)},
                     {"valid", intrinsic_json(run.d2c.valid)},
                     {"color", intrinsic_json(run.d2c.color)},
                     {"rotation", run.d2c.rotation},
                     {"translation_mm", run.d2c.translation},
                     {"unit_in_rotation", run.unit_in_rotation}};
  }
  report["d2d"] = {{"baseline", run.depth.baseline},
                   {"focal_length", run.depth.focal_length},
                   {"unit_mm", run.depth.d2d_params_unit},
                   {"depth_mode", run.depth.depth_mode},
                   {"ref_dist", run.depth.ref_dist},
                   {"disp_offset", run.depth.disp_offset},
                   {"invalid_disp", run.depth.invalid_disp}};
  report["temperatures"] = {
      {"left", run.temperatures.left}, {"right", run.temperatures.right}, {"ldm", run.temperatures.ldm}};
  return report;
}

}  // namespace

std::string run_text(const CalibrationRun& run) {
  std::string text = view_text("left IR camera (camera 1)", left_view(run), run.rectification.cam1) +
                     view_text("right IR camera (camera 0)", right_view(run), run.rectification.cam0) + rows_text(run);
  if (run.has_lut()) text += "undistortion LUT\n" + lut_text("left", run.luts[1]) + lut_text("right", run.luts[0]);
  text += d2c_text(run) + d2d_text(run);
  return text + fmt::format("temperatures    left {:g}, right {:g}, laser {:g}\n",
                            run.temperatures.left,
                            run.temperatures.right,
                            run.temperatures.ldm);
}

ordered_json run_json(const CalibrationRun& run) {
  ordered_json report{{"code", run.code}, {"failed_step", nullptr}, {"log", run.log}};
  if (run.good()) {
    report.update(results_json(run));
  } else {
    report["failed_step"] = run.step;
    report["hint"] = calibration_hint(run);
  }
  return report;
}

std::string run_registers_text() {
  std::string text;
  for (const std::string_view name : kTables) {
    const RegisterBlock* const block = find_block(name);
    if (block != nullptr) text += "\n" + register_table(*block, block->registers());
  }
  return text;
}

ordered_json run_registers_json() {
  ordered_json blocks = ordered_json::array();
  for (const std::string_view name : kTables) {
    const RegisterBlock* const block = find_block(name);
    if (block != nullptr) blocks.push_back(register_json(*block, block->registers()));
  }
  return blocks;
}

}  // namespace vq3900::tool
