#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace tevra::tools {

/** One line of a standard's table of codes. */
struct NamedCode {
  int code;          ///< the value in the stream
  const char* name;  ///< in English
};

/** The name of `code`; empty where the table has none. */
template <size_t size>
[[nodiscard]] std::string nameIn(const std::array<NamedCode, size>& table, int code) {
  for (const NamedCode& entry : table) {
    if (entry.code == code) {
      return entry.name;
    }
  }
  return {};
}

/** The same with the table named before: a NameOf. */
template <const auto& table>
[[nodiscard]] std::string nameOf(int code) {
  return nameIn(table, code);
}

}  // namespace tevra::tools
