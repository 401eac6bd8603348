#pragma once

#include <string>

namespace tevra::test {

/**
 * A file system of its own in memory, mounted on a directory from construction to destruction. Only
 * the thread that makes it and the programs that this starts see it.
 */
class MountedTmpfs {
 public:
  /** Why this process cannot mount anything; empty when it can. */
  [[nodiscard]] static std::string whyNot();

  /** `options` as for mount(8), such as "size=16k". The directory must exist. Raises
   * std::runtime_error. */
  MountedTmpfs(const std::string& directory, const std::string& options);
  ~MountedTmpfs();
  MountedTmpfs(const MountedTmpfs&) = delete;
  MountedTmpfs& operator=(const MountedTmpfs&) = delete;

  void makeReadOnly() const;
  void makeWritable(const std::string& options = {}) const;

 private:
  void remount(unsigned long flags, const std::string& options) const;

  std::string directory_;
};

}  // namespace tevra::test
