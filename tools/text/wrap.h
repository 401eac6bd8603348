#pragma once

#include <cstddef>
#include <string>

namespace tevra::tools {

/**
 * The lines of `text` broken between words, so that none has more than `width` characters, as far
 * as its words are short enough; 0 leaves them as they are. What is broken off goes on `indent`
 * blanks from the left where the line itself begins with a blank, else at the left.
 */
[[nodiscard]] std::string wrapped(const std::string& text, size_t width, size_t indent);

}  // namespace tevra::tools
