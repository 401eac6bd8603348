#pragma once

#include <string>

#include "tools/report/page/geometry.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/**
 * Draws elements of a picture, in its units. The style sheet gives a class its looks; `classes` has
 * blanks between them.
 */
class Svg {
 public:
  /** `markup` must outlive it. */
  explicit Svg(Markup& markup) : markup_(markup) {}

  /** Which point of a text `x` is. */
  enum class Anchor { kStart, kMiddle, kEnd };

  /** A picture as wide as the page; in its own units, `top` is the y of its upper side. */
  [[nodiscard]] Markup::Element picture(const Attributes& attributes, double top, double height);
  /** What is drawn while it lives shares its attributes. */
  [[nodiscard]] Markup::Element group(const Attributes& attributes) {
    return markup_.open("g", attributes);
  }

  /** `radius` is that of the corners; not more than 0: they are square. */
  void rect(const Box& box, const std::string& classes, double radius = 0);
  /** `y` is the base line. */
  void text(double x, double y, const std::string& classes, const std::string& text,
            Anchor anchor = Anchor::kStart);
  /** A straight one, as wide as its class says. */
  void line(double x1, double y1, double x2, double y2, const std::string& classes);
  /** A curve that begins and ends level, `thickness` wide. */
  void ribbon(double x1, double y1, double x2, double y2, double thickness);
  /** `x` and `y` are its centre. */
  void circle(double x, double y, double radius, const std::string& classes);
  /** Said of the group around it: shown by browsers when the pointer rests there. */
  void title(const std::string& text) { markup_.leaf("title", {}, text); }

 private:
  Markup& markup_;
};

}  // namespace tevra::tools::report
