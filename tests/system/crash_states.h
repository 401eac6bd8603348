#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/system/tracer.h"

namespace tevra::test {

/** What lies in a directory: paths below it, and what the files hold. */
using Files = std::map<std::string, std::string>;

/**
 * What a crash may leave of a directory that a thread has written to: a file system of the weakest
 * kind that keeps POSIX's promises.
 *
 * - What is written is durable after fsync() of the file, syncfs() or sync(). Before that, of what
 *   was appended any part may be there, and zeros in place of the rest.
 * - Names (made, emptied, renamed, removed) change in the order of the calls, each at any time from
 *   its call on and whatever becomes of contents: a new name may lead to a file whose contents are
 *   lost. They are durable after syncfs() and sync().
 *
 * Directories themselves are not told apart: in one that is not there, nothing is.
 */
class CrashStates {
 public:
  /** Of the directory at `root`, empty at first. */
  explicit CrashStates(std::string root) : root_(std::move(root)) {}

  /** Takes the thread's next call, of any kind. Raises std::runtime_error for one that changes a
   * file here in a way that it does not know. */
  void take(const SystemCall& call);

  /** All that may lie there if the machine stops now. */
  [[nodiscard]] std::set<Files> now() const;

 private:
  struct Content {
    std::string text;
    size_t durable = 0;  ///< bytes
  };
  using Names = std::map<std::string, std::shared_ptr<Content>>;
  /** What a call does to the names: `to` leads to `content`, `from` to nothing. */
  struct Change {
    std::string from;
    std::string to;
    std::shared_ptr<Content> content;
  };

  [[nodiscard]] std::string relative(const std::string& path) const;
  void open(const SystemCall& call);
  void rename(const std::string& from, const std::string& to);
  void change(const Change& change);
  void takeDescriptorCall(const SystemCall& call);
  void syncAll();

  const std::string root_;
  Names names_;         ///< as they are
  Names durableNames_;  ///< as they were at the last sync, before changes_
  std::vector<Change> changes_;
  std::map<std::string, std::shared_ptr<Content>> open_;  ///< by descriptor
};

}  // namespace tevra::test
