#pragma once

namespace tevra::tools::report {

/** A rectangle in the units of a picture; y grows downwards. */
struct Box {
  double x = 0;       ///< of the left side
  double y = 0;       ///< of the upper side
  double width = 0;   ///< not negative
  double height = 0;  ///< not negative

  ///@{
  /** The other two sides, and the y halfway between the upper and the lower one. */
  [[nodiscard]] double right() const { return x + width; }
  [[nodiscard]] double bottom() const { return y + height; }
  [[nodiscard]] double middle() const { return y + height / 2; }
  ///@}
};

/** Width of every picture; on a screen and on paper it is scaled to the page's. */
inline constexpr double kPictureWidth = 1100;

}  // namespace tevra::tools::report
