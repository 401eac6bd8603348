#pragma once

#include <string>
#include <string_view>

namespace tevra::tools::report {

/**
 * About how wide text is in a system font of size 1, rather too wide than too narrow; the page is
 * laid out where no browser can be asked. Bold is about an eighth wider.
 */
[[nodiscard]] double textWidth(std::string_view utf8);

/** The text, or as much of it as fits with an ellipsis behind it; empty when nothing fits. */
[[nodiscard]] std::string fitted(const std::string& utf8, double width, double fontSize);

}  // namespace tevra::tools::report
