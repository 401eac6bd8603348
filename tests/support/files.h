#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tevra::test {

/** All of it; empty when there is no such file. */
inline std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

/** Permission bits of what lies at `path`, 0 when nothing does. */
inline mode_t modeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

/** How many descriptors this process has open. */
inline std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/** Sets the process's umask for its own lifetime. */
class ScopedUmask {
 public:
  explicit ScopedUmask(mode_t mask) : before_(umask(mask)) {}
  ~ScopedUmask() { umask(before_); }
  ScopedUmask(const ScopedUmask&) = delete;
  ScopedUmask& operator=(const ScopedUmask&) = delete;

 private:
  mode_t before_;
};

}  // namespace tevra::test
