#pragma once

#include <string>

namespace tevra::tools {

/** What messages call the input that a user gave as `name`: "-" is "standard input". */
[[nodiscard]] inline std::string sourceName(const std::string& name) {
  return name == "-" ? "standard input" : name;
}

/** What messages call the output that a user gave as `name`: "-" is "standard output". */
[[nodiscard]] inline std::string sinkName(const std::string& name) {
  return name == "-" ? "standard output" : name;
}

}  // namespace tevra::tools
