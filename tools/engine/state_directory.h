#pragma once

#include <dirent.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace tevra::tools {

/**
 * The directory in which an engine keeps its three files, for this process alone while it lives.
 * Other runs of the tool are kept out; a daemon that has it as its configuration root is not.
 */
class StateDirectory {
 public:
  /**
   * Makes `path` where it is missing, its parents not. Raises ToolError where another run has it,
   * where no file can be made in it, and where one of the three is there but cannot be read: an
   * engine would begin anew and replace it.
   */
  explicit StateDirectory(const std::string& path);

  /** Raises ToolError when no versions have been saved there since construction. */
  void requireSaved() const;

 private:
  /** Of a directory that was opened. */
  struct Closer {
    void operator()(DIR* directory) const { (void)closedir(directory); }  ///< and unlocks it
  };

  /** Tells a file from another of its name: inode, and nanoseconds since 1970; zeros for none. */
  using FileIdentity = std::pair<uint64_t, int64_t>;

  [[noreturn]] void fail(const std::string& reason) const;
  void lock();
  void requireWritable() const;
  template <class Record>
  void requireReadable(const std::string& name) const;
  [[nodiscard]] FileIdentity versionsFile() const;

  const std::string path_;
  std::unique_ptr<DIR, Closer> directory_;
  FileIdentity versionsBefore_;
};

}  // namespace tevra::tools
