#include "calib/calib_plot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "calib/rectified_view.h"
#include "modules/fixed_point.h"

namespace vq3900::tool {

namespace {

constexpr const char* kStyle =
    "text { font-family: system-ui, 'Segoe UI', Roboto, 'DejaVu Sans', Arial, sans-serif; fill: #1f2933; }\n"
    ".title { font-size: 22px; font-weight: 600; }\n"
    ".subtitle { font-size: 14px; fill: #52606d; }\n"
    ".heading { font-size: 14px; font-weight: 600; }\n"
    ".note { font-size: 12px; fill: #52606d; }\n"
    ".panel { fill: #f7f9fb; stroke: #d5dce3; }\n"
    ".mesh { fill: none; stroke: #c3d5ea; stroke-width: 0.8; }\n"
    ".border { fill: none; stroke: #1f6fc0; stroke-width: 1.8; }\n"
    ".output { fill: none; stroke: #1f2933; stroke-width: 1.8; }\n"
    ".image { fill: #ffffff; stroke: #1f2933; stroke-width: 1.4; }\n"
    ".row { stroke: #d9601a; stroke-width: 1; stroke-opacity: 0.7; }\n"
    ".dot { fill: #d9601a; stroke: #ffffff; stroke-width: 1; }\n"
    ".arrow0, .arrow1, .arrow2, .arrow3, .outside { fill: none; stroke-width: 1.2; stroke-linecap: round; }\n"
    ".arrow0 { stroke: #7fb3dc; }\n"
    ".arrow1 { stroke: #3f8fcb; }\n"
    ".arrow2 { stroke: #1c62a3; }\n"
    ".arrow3 { stroke: #0b3766; }\n"
    ".outside { stroke: #c9d1d9; }\n";

constexpr double kWidth = 1200;
constexpr double kMargin = 28;
constexpr double kGap = 32;
constexpr double kPanelWidth = (kWidth - 2 * kMargin - kGap) / 2;
constexpr double kMostHeight = 420;
constexpr int kRows = 7;
constexpr int kColumns = 6;
constexpr double kBaselines = 20;  // distance of the points that are drawn

// Points along a straight line of the camera's image, rectified; cut where the lens model ends.
std::vector<std::vector<Point>> rectified_line(const RectifiedView& view, Point from, Point to) {
  constexpr int kSteps = 48;
  std::vector<std::vector<Point>> pieces(1);
  for (int i = 0; i <= kSteps; ++i) {
    const double t = static_cast<double>(i) / kSteps;
    const auto p = view.to_rectified({from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)});
    if (p) {
      pieces.back().push_back(*p);
    } else if (!pieces.back().empty()) {
      pieces.emplace_back();
    }
  }
  return pieces;
}

struct ImageLine {
  Point from;
  Point to;
};

std::vector<ImageLine> border_lines(const RectifiedView& view) {
  const double x = view.camera.width - 1;
  const double y = view.camera.height - 1;
  return {{{0, 0}, {x, 0}}, {{x, 0}, {x, y}}, {{x, y}, {0, y}}, {{0, y}, {0, 0}}};
}

std::vector<ImageLine> mesh_lines(const RectifiedView& view) {
  constexpr int kCells = 10;
  std::vector<ImageLine> lines;
  const double x = view.camera.width - 1;
  const double y = view.camera.height - 1;
  for (int i = 1; i < kCells; ++i) {
    const double t = static_cast<double>(i) / kCells;
    lines.push_back({{t * x, 0}, {t * x, y}});
    lines.push_back({{0, t * y}, {x, t * y}});
  }
  return lines;
}

// All of both borders and the output image, but no more than another half image around it.
Box shared_extent(const RectifiedView& left, const RectifiedView& right) {
  const double w = left.output.width;
  const double h = left.output.height;
  double low_x = 0, low_y = 0, high_x = w, high_y = h;
  for (const RectifiedView* const view : {&left, &right}) {
    for (const ImageLine& line : border_lines(*view)) {
      for (const auto& piece : rectified_line(*view, line.from, line.to)) {
        for (const Point& p : piece) {
          low_x = std::min(low_x, p.x);
          low_y = std::min(low_y, p.y);
          high_x = std::max(high_x, p.x);
          high_y = std::max(high_y, p.y);
        }
      }
    }
  }
  low_x = std::max(low_x, -w / 2) - 0.02 * w;
  low_y = std::max(low_y, -h / 2) - 0.02 * w;
  high_x = std::min(high_x, 1.5 * w) + 0.02 * w;
  high_y = std::min(high_y, 1.5 * h) + 0.02 * w;
  return {low_x, low_y, high_x - low_x, high_y - low_y};
}

void draw_view(SvgWriter& svg, const PlotPanel& panel, const RectifiedView& view) {
  const auto draw = [&](const char* style_class, const std::vector<ImageLine>& lines) {
    for (const ImageLine& line : lines) {
      for (std::vector<Point>& piece : rectified_line(view, line.from, line.to)) {
        for (Point& p : piece)
          p = panel.place(p);
        svg.polyline(style_class, piece);
      }
    }
  };
  svg.rectangle("panel", panel.box());
  svg.begin_clip(panel.box());
  draw("mesh", mesh_lines(view));
  draw("border", border_lines(view));
  svg.rectangle(
      "output",
      panel.place(Box{0, 0, static_cast<double>(view.output.width), static_cast<double>(view.output.height)}));
  svg.end_clip();
}

void draw_matches(SvgWriter& svg, const PlotPanel& left, const PlotPanel& right, const CalibrationRun& run) {
  double row = -1;
  for (const MatchedPoint& point : matched_points(run, kColumns, kRows, kBaselines)) {
    if (point.left.y != row) {
      const double y = left.place(point.left).y;
      svg.line("row", {left.box().x, y}, {right.box().right(), y});
      row = point.left.y;
    }
    svg.circle("dot", left.place(point.left), 3);
    const Point other = right.place(point.right);
    if (other.x >= right.box().x && other.x <= right.box().right()) svg.circle("dot", other, 3);
  }
}

void draw_legend(SvgWriter& svg, Point at, const CalibrationRun& run) {
  const double y = at.y - 4;
  svg.line("output", {at.x, y}, {at.x + 22, y});
  svg.text("note", {at.x + 28, at.y}, "output image");
  svg.line("border", {at.x + 120, y}, {at.x + 142, y});
  svg.text("note", {at.x + 148, at.y}, "border of the camera's image, undistorted and turned");
  svg.line("row", {at.x + 505, y}, {at.x + 527, y});
  svg.circle("dot", {at.x + 516, y}, 3);
  const double metres = std::fabs(widen(run.depth.baseline) * widen(run.depth.d2d_params_unit)) * kBaselines / 1000;
  svg.text("note",
           {at.x + 533, at.y},
           fmt::format("rows, and points {:.1f} m away: their rows differ by at most {:.4f} pixels",
                       metres,
                       check_rows(run).largest_difference));
}

// Draws both rectified views side by side and answers the height used.
double draw_views(SvgWriter& svg, Point corner, const PlotPanel& left, const PlotPanel& right,
                  const CalibrationRun& run) {
  svg.text("heading", {left.box().x, corner.y}, "Left camera, rectified");
  svg.text("heading", {right.box().x, corner.y}, "Right camera, rectified");
  draw_view(svg, left, left_view(run));
  draw_view(svg, right, right_view(run));
  draw_matches(svg, left, right, run);
  const double bottom = left.box().bottom() + 22;
  draw_legend(svg, {corner.x, bottom}, run);
  return bottom - corner.y;
}

std::string summary(const CalibrationRun& run) {
  const DeCameraIntrinsic_S& output = run.rectification.cam1_rectified;
  const double baseline = widen(run.depth.baseline) * widen(run.depth.d2d_params_unit);
  return fmt::format(
      "baseline {:.2f} mm, focal length {:.2f} pixels (rectified {:.2f}), output {}x{}, turned by {:.2f} and {:.2f} "
      "degrees",
      baseline,
      run.depth.focal_length,
      output.fx,
      output.width,
      output.height,
      degrees_of(left_view(run).rotation),
      degrees_of(right_view(run).rotation));
}

}  // namespace

PlotPanel::PlotPanel(Point corner, double width, double most_height, const Box& extent) : extent_(extent) {
  const double w = std::max(extent.width, 1.0);
  const double h = std::max(extent.height, 1.0);
  scale_ = std::min(width / w, most_height / h);
  box_ = {corner.x + (width - w * scale_) / 2, corner.y, w * scale_, h * scale_};
}

Point PlotPanel::place(Point pixel) const {
  return {box_.x + (pixel.x - extent_.x) * scale_, box_.y + (pixel.y - extent_.y) * scale_};
}

Box PlotPanel::place(const Box& pixels) const {
  const Point corner = place(Point{pixels.x, pixels.y});
  return {corner.x, corner.y, pixels.width * scale_, pixels.height * scale_};
}

std::string calibration_plot(const std::string& name, const CalibrationRun& run) {
  constexpr double kViewsTop = 112;
  const Box extent = shared_extent(left_view(run), right_view(run));
  const double right_x = kMargin + kPanelWidth + kGap;
  const PlotPanel left({kMargin, kViewsTop + 10}, kPanelWidth, kMostHeight, extent);
  const PlotPanel right({right_x, kViewsTop + 10}, kPanelWidth, kMostHeight, extent);

  // The height is known when everything is drawn: once for the height, once for good.
  const auto draw = [&](SvgWriter& svg) {
    svg.text("title", {kMargin, 44}, name);
    svg.text("subtitle", {kMargin, 70}, summary(run));
    const double below = kViewsTop + draw_views(svg, {kMargin, kViewsTop}, left, right, run) + 44;
    return below + draw_displacements(svg, {kMargin, below}, kPanelWidth, kGap, run) + kMargin;
  };
  SvgWriter trial(kWidth, 0, kStyle);
  SvgWriter svg(kWidth, draw(trial), kStyle);
  draw(svg);
  return svg.finish();
}

}  // namespace vq3900::tool
