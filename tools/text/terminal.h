#pragma once

#include <ostream>
#include <string>

namespace tevra::tools {

/** Characters that a line of `stream` has room for; 0 where it is no terminal. */
[[nodiscard]] size_t widthOf(const std::ostream& stream);

/** Of the environment; empty where it is not set. */
[[nodiscard]] std::string environmentVariable(const char* name);

/** The message on one line; on a terminal that is narrower it is broken between words. */
void printMessage(std::ostream& err, const std::string& text);

}  // namespace tevra::tools
