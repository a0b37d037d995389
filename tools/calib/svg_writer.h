// Writing SVG: shapes with a style class, numbers in the same form everywhere, texts escaped.
#ifndef VQ3900_TOOLS_CALIB_SVG_WRITER_H
#define VQ3900_TOOLS_CALIB_SVG_WRITER_H

#include <span>
#include <string>
#include <string_view>

#include "calib/point.h"

namespace vq3900::tool {

struct Box {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  double right() const { return x + width; }
  double bottom() const { return y + height; }
};

class SvgWriter {
 public:
  // A document of that size in pixels with a white ground; the style sheet names the classes.
  SvgWriter(double width, double height, std::string_view style);

  void rectangle(std::string_view style_class, const Box& box);
  void line(std::string_view style_class, Point from, Point to);
  void polyline(std::string_view style_class, std::span<const Point> points);
  void circle(std::string_view style_class, Point centre, double radius);
  void text(std::string_view style_class, Point at, std::string_view text);

  // Arrows of one class as one path.
  struct Arrow {
    Point from;
    Point to;
  };
  void arrows(std::string_view style_class, std::span<const Arrow> arrows);

  // What is drawn between the two shows inside the box alone.
  void begin_clip(const Box& box);
  void end_clip();

  // The document; nothing can be drawn any more.
  std::string finish();

 private:
  std::string text_;
  int clips_ = 0;
};

}  // namespace vq3900::tool

#endif
