#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace tevra::test {

inline void writeText(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
}

/** Empty when there is no such file. */
inline std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tevra::test
