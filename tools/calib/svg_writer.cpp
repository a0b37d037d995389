#include "calib/svg_writer.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace vq3900::tool {

namespace {

// Two decimals are finer than any screen; no "-0" and no zeros at the end. Shapes far outside stay numbers that
// every program reads.
std::string number(double value) {
  constexpr double kFarthest = 1e6;
  const double shown = std::isfinite(value) ? std::fmax(std::fmin(value, kFarthest), -kFarthest) : 0;
  std::string text = fmt::format("{:.2f}", shown);
  while (text.back() == '0')
    text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string pair(Point point) {
  return number(point.x) + "," + number(point.y);
}

// Text of files may hold anything: characters of markup are escaped, what is not plain ASCII becomes a question mark.
std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      default:
        result += c >= ' ' && c <= '~' ? c : '?';
    }
  }
  return result;
}

// A shaft and two strokes of a head, whose size goes with the length.
std::string arrow_path(const SvgWriter::Arrow& arrow) {
  const double x = arrow.to.x - arrow.from.x;
  const double y = arrow.to.y - arrow.from.y;
  const double length = std::hypot(x, y);
  std::string path = fmt::format("M{}L{}", pair(arrow.from), pair(arrow.to));
  if (length < 1) return path;
  constexpr double kLargestHead = 5;
  const double head = std::fmin(length * 0.35, kLargestHead) / length;
  const Point left{arrow.to.x - head * (x - 0.6 * y), arrow.to.y - head * (y + 0.6 * x)};
  const Point right{arrow.to.x - head * (x + 0.6 * y), arrow.to.y - head * (y - 0.6 * x)};
  return path + fmt::format("M{}L{}L{}", pair(left), pair(arrow.to), pair(right));
}

}  // namespace

SvgWriter::SvgWriter(double width, double height, std::string_view style) {
  const std::string size = fmt::format("{} {}", number(width), number(height));
  text_ = fmt::format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{}\" height=\"{}\" viewBox=\"0 0 {}\">\n"
      "<style>\n{}</style>\n"
      "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n",
      number(width),
      number(height),
      size,
      style);
}

void SvgWriter::rectangle(std::string_view style_class, const Box& box) {
  text_ += fmt::format("<rect class=\"{}\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\"/>\n",
                       style_class,
                       number(box.x),
                       number(box.y),
                       number(box.width),
                       number(box.height));
}

void SvgWriter::line(std::string_view style_class, Point from, Point to) {
  text_ += fmt::format("<line class=\"{}\" x1=\"{}\" y1=\"{}\" x2=\"{}\" y2=\"{}\"/>\n",
                       style_class,
                       number(from.x),
                       number(from.y),
                       number(to.x),
                       number(to.y));
}

void SvgWriter::polyline(std::string_view style_class, std::span<const Point> points) {
  if (points.size() < 2) return;
  text_ += fmt::format(R"(<polyline class="{}" points=")", style_class);
  for (const Point& point : points)
    text_ += (&point == points.data() ? "" : " ") + pair(point);
  text_ += "\"/>\n";
}

void SvgWriter::circle(std::string_view style_class, Point centre, double radius) {
  text_ += fmt::format("<circle class=\"{}\" cx=\"{}\" cy=\"{}\" r=\"{}\"/>\n",
                       style_class,
                       number(centre.x),
                       number(centre.y),
                       number(radius));
}

void SvgWriter::text(std::string_view style_class, Point at, std::string_view text) {
  text_ += fmt::format(
      "<text class=\"{}\" x=\"{}\" y=\"{}\">{}</text>\n", style_class, number(at.x), number(at.y), escaped(text));
}

void SvgWriter::arrows(std::string_view style_class, std::span<const Arrow> arrows) {
  if (arrows.empty()) return;
  text_ += fmt::format(R"(<path class="{}" d=")", style_class);
  for (const Arrow& arrow : arrows)
    text_ += arrow_path(arrow);
  text_ += "\"/>\n";
}

void SvgWriter::begin_clip(const Box& box) {
  ++clips_;
  text_ += fmt::format(
      "<clipPath id=\"clip{0}\"><rect x=\"{1}\" y=\"{2}\" width=\"{3}\" height=\"{4}\"/></clipPath>\n"
      "<g clip-path=\"url(#clip{0})\">\n",
      clips_,
      number(box.x),
      number(box.y),
      number(box.width),
      number(box.height));
}

void SvgWriter::end_clip() {
  text_ += "</g>\n";
}

std::string SvgWriter::finish() {
  return std::exchange(text_, {}) + "</svg>\n";
}

}  // namespace vq3900::tool
