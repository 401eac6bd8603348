#pragma once

#include <stdexcept>

namespace tevra::tools {

/**
 * Ends a command with exit status 1; the text is one line that tells the user what is wrong and
 * what to do.
 */
class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** Ends a command with exit status 2: what the user asks for makes no sense. One line, too. */
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tevra::tools
