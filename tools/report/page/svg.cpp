#include "tools/report/page/svg.h"

#include <array>

#include "tools/report/page/figures.h"

namespace tevra::tools::report {

Markup::Element Svg::scroller(const std::string& label) {
  return markup_.open(
      "div", {{"class", "scroller"}, {"tabindex", "0"}, {"role", "region"}, {"aria-label", label}});
}

Markup::Element Svg::picture(const Attributes& attributes, double height) {
  Attributes all = {{"viewBox", "0 0 " + coordinate(kPictureWidth) + " " + coordinate(height)}};
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

void Svg::path(const std::string& data, const Attributes& attributes) {
  Attributes all = {{"d", data}};
  all.insert(all.end(), attributes.begin(), attributes.end());
  markup_.mark("path", all);
}

void Svg::circle(double x, double y, double radius, const std::string& classes) {
  markup_.mark("circle", {{"class", classes},
                          {"cx", coordinate(x)},
                          {"cy", coordinate(y)},
                          {"r", coordinate(radius)}});
}

}  // namespace tevra::tools::report
