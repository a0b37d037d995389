// The displacement half of the picture: where the rectification stage looks for each undistorted pixel.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "calib/calib_plot.h"
#include "calib/rectified_view.h"
#include "modules/fixed_point.h"

namespace vq3900::tool {

namespace {

constexpr int kArrowsAcross = 28;
constexpr double kMapHeight = 420;

Box image_of(const CameraView& camera) {
  return {0, 0, camera.width, camera.height};
}

bool contains(const Box& box, Point p) {
  return p.x >= box.x && p.y >= box.y && p.x <= box.right() - 1 && p.y <= box.bottom() - 1;
}

// Takes a sample; all count for the largest one, some are shown.
void add_sample(DisplacementField& field, Point at, Point by, bool shown) {
  const bool inside = contains(field.image, at);
  if (inside) field.largest = std::max(field.largest, std::hypot(by.x, by.y));
  if (shown) field.shown.push_back({at, by, inside});
}

void sample_lut(DisplacementField& field, const LutGrid& lut) {
  const int step = 1 << lut.info.sample_rate_bit;
  const auto width = static_cast<int>(lut.info.lut_width);
  const auto height = static_cast<int>(lut.info.lut_height);
  const Point start{static_cast<double>(static_cast<std::int32_t>(lut.info.lut_x_start)),
                    static_cast<double>(static_cast<std::int32_t>(lut.info.lut_y_start))};
  field.source = fmt::format("LUT of {}x{} samples, every {} pixels", width, height, step);
  field.extent = {start.x, start.y, static_cast<double>((width - 1) * step), static_cast<double>((height - 1) * step)};
  const int every = std::max(1, (width + kArrowsAcross / 2) / kArrowsAcross);
  field.spacing = every * step;
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      const auto i = static_cast<std::size_t>(row) * lut.info.lut_width + static_cast<std::size_t>(column);
      const Point at{start.x + column * step, start.y + row * step};
      const Point by{lut.dx[i] * widen(lut.info.lut_fx), lut.dy[i] * widen(lut.info.lut_fy)};
      add_sample(field, at, by, row % every == 0 && column % every == 0);
    }
  }
}

void sample_model(DisplacementField& field, const CameraView& camera) {
  field.source = "lens model, no LUT";
  field.extent = field.image;
  field.spacing = std::max(1.0, camera.width / kArrowsAcross);
  const int rows = static_cast<int>(std::ceil(camera.height / field.spacing));
  for (int row = 0; row <= rows; ++row) {
    for (int column = 0; column <= kArrowsAcross; ++column) {
      const Point at{(camera.width - 1) * column / kArrowsAcross, (camera.height - 1) * row / rows};
      const Point p{(at.x - camera.cx) / camera.fx, (at.y - camera.cy) / camera.fy};
      const Point d = distort(camera.model, p);
      add_sample(field, at, {(d.x - p.x) * camera.fx, (d.y - p.y) * camera.fy}, true);
    }
  }
}

// The largest of 1, 2, 5 times a power of ten that is not above the value.
double round_down(double value) {
  const double power = std::pow(10, std::floor(std::log10(value)));
  for (const double digit : {5.0, 2.0}) {
    if (value >= digit * power) return digit * power;
  }
  return power;
}

// How many times their length arrows are drawn: the largest a little longer than the distance between two.
double arrow_scale(const DisplacementField& field) {
  return field.largest > 0 ? round_down(std::fmax(1.8 * field.spacing / field.largest, 1e-3)) : 1;
}

void draw_arrows(SvgWriter& svg, const PlotPanel& panel, const DisplacementField& field, double scale) {
  static constexpr std::array<const char*, 4> kClasses{"arrow0", "arrow1", "arrow2", "arrow3"};
  std::array<std::vector<SvgWriter::Arrow>, kClasses.size()> arrows;
  std::vector<SvgWriter::Arrow> outside;
  for (const DisplacementSample& sample : field.shown) {
    const Point to{sample.at.x + scale * sample.by.x, sample.at.y + scale * sample.by.y};
    const double part = field.largest > 0 ? std::hypot(sample.by.x, sample.by.y) / field.largest : 0;
    const auto shade = static_cast<std::size_t>(std::clamp(part * 4, 0.0, 3.0));
    (sample.inside ? arrows[shade] : outside).push_back({panel.place(sample.at), panel.place(to)});
  }
  svg.arrows("outside", outside);
  for (std::size_t i = 0; i < arrows.size(); ++i)
    svg.arrows(kClasses[i], arrows[i]);
}

void draw_scale(SvgWriter& svg, const PlotPanel& panel, const DisplacementField& field, double scale) {
  const double y = panel.box().bottom() + 22;
  const double x = panel.box().x;
  svg.text("note", {x, y}, fmt::format("largest displacement {:.2f} pixels; {}", field.largest, field.source));
  if (!(field.largest > 0)) return;
  const double shown = round_down(field.largest);
  const double length = shown * scale * panel.scale();
  const SvgWriter::Arrow arrow{{x, y + 16}, {x + length, y + 16}};
  svg.arrows("arrow2", std::span{&arrow, 1});
  svg.text("note", {x + length + 8, y + 20}, fmt::format("{:g} pixels, arrows drawn {:g} times as long", shown, scale));
}

void draw_field(SvgWriter& svg, const PlotPanel& panel, const DisplacementField& field) {
  const double scale = arrow_scale(field);
  svg.rectangle("panel", panel.box());
  svg.begin_clip(panel.box());
  svg.rectangle("image", panel.place(field.image));
  draw_arrows(svg, panel, field, scale);
  svg.end_clip();
  draw_scale(svg, panel, field, scale);
}

Box joined(const Box& a, const Box& b) {
  const double x = std::min(a.x, b.x);
  const double y = std::min(a.y, b.y);
  return {x, y, std::max(a.right(), b.right()) - x, std::max(a.bottom(), b.bottom()) - y};
}

Box padded(const Box& box) {
  const double pad = 0.02 * box.width;
  return {box.x - pad, box.y - pad, box.width + 2 * pad, box.height + 2 * pad};
}

}  // namespace

DisplacementField displacement_field(const CalibrationRun& run, bool left) {
  DisplacementField field;
  const RectifiedView view = left ? left_view(run) : right_view(run);
  const LutGrid& lut = run.luts[left ? 1 : 0];
  field.title =
      left ? "Left camera, displacement of the undistortion" : "Right camera, displacement of the undistortion";
  field.image = image_of(view.camera);
  if (lut.dx.empty()) {
    sample_model(field, view.camera);
  } else {
    sample_lut(field, lut);
  }
  return field;
}

double draw_displacements(SvgWriter& svg, Point corner, double width, double gap, const CalibrationRun& run) {
  const std::array<DisplacementField, 2> fields{displacement_field(run, true), displacement_field(run, false)};
  const Box extent =
      padded(joined(joined(fields[0].extent, fields[0].image), joined(fields[1].extent, fields[1].image)));
  double bottom = corner.y;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const double x = corner.x + (i == 0 ? 0 : width + gap);
    const PlotPanel panel({x, corner.y + 10}, width, kMapHeight, extent);
    svg.text("heading", {panel.box().x, corner.y}, fields[i].title);
    draw_field(svg, panel, fields[i]);
    bottom = std::max(bottom, panel.box().bottom() + 42);
  }
  return bottom - corner.y;
}

}  // namespace vq3900::tool
