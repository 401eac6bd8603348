#include "tools/report/page/svg.h"

#include <array>

#include "tools/report/page/figures.h"

namespace tevra::tools::report {

Markup::Element Svg::picture(const Attributes& attributes, double top, double height) {
  Attributes all = {{"viewBox", "0 " + coordinate(top) + " " + coordinate(kPictureWidth) + " " +
                                    coordinate(height)}};
  all.insert(all.end(), attributes.begin(), attributes.end());
  return markup_.open("svg", all);
}

void Svg::rect(const Box& box, const std::string& classes, double radius) {
  Attributes attributes = {{"class", classes},
                           {"x", coordinate(box.x)},
                           {"y", coordinate(box.y)},
                           {"width", coordinate(box.width)},
                           {"height", coordinate(box.height)}};
  if (radius > 0) {
    attributes.emplace_back("rx", coordinate(radius));
  }
  markup_.mark("rect", attributes);
}

void Svg::text(double x, double y, const std::string& classes, const std::string& text,
               Anchor anchor) {
  static constexpr std::array<const char*, 3> kAnchors = {"start", "middle", "end"};
  if (text.empty()) {
    return;
  }
  Attributes attributes = {{"class", classes}, {"x", coordinate(x)}, {"y", coordinate(y)}};
  if (anchor != Anchor::kStart) {
    attributes.emplace_back("text-anchor", kAnchors.at(static_cast<size_t>(anchor)));
  }
  markup_.leaf("text", attributes, text);
}

void Svg::line(double x1, double y1, double x2, double y2, const std::string& classes) {
  markup_.mark("line", {{"class", classes},
                        {"x1", coordinate(x1)},
                        {"y1", coordinate(y1)},
                        {"x2", coordinate(x2)},
                        {"y2", coordinate(y2)}});
}

void Svg::ribbon(double x1, double y1, double x2, double y2, double thickness) {
  const auto point = [](double x, double y) { return coordinate(x) + " " + coordinate(y); };
  const double halfway = (x1 + x2) / 2;
  markup_.mark("path", {{"d", "M" + point(x1, y1) + "C" + point(halfway, y1) + " " +
                                  point(halfway, y2) + " " + point(x2, y2)},
                        {"stroke-width", coordinate(thickness)}});
}

void Svg::circle(double x, double y, double radius, const std::string& classes) {
  markup_.mark("circle", {{"class", classes},
                          {"cx", coordinate(x)},
                          {"cy", coordinate(y)},
                          {"r", coordinate(radius)}});
}

}  // namespace tevra::tools::report
