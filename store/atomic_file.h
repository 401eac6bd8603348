#pragma once

#include <string>
#include <system_error>

namespace tevra {

/** Raised where a whole file lies beside another that may not be replaced, though it may perhaps be
 * written. */
class NotReplaceable : public std::system_error {
 public:
  /** For the reason `error`, an errno. */
  NotReplaceable(int error, const std::string& what)
      : std::system_error(error, std::generic_category(), what) {}
};

/**
 * A file that is written beside the one that it replaces, so that under `path` there is a whole
 * file at any moment, whenever the process is killed or the power fails: the former or the new one.
 *
 * It is written as "<path>.new"; what lies there is removed first. Where `path` is a symbolic link,
 * the file that it points to is replaced. What cannot be replaced is written where it lies: a
 * device or a pipe, and a file in a directory where none can be made (docs/files.md, "How a file is
 * saved").
 *
 * Errors are std::system_error. Used by one thread at a time.
 */
class AtomicFile {
 public:
  /** Where it is written first. */
  enum class Place { kBeside, kInPlace };

  /** Creates the file, with mode 0600; in place truncates it. Waits for nobody, not even for the
   * reader of a pipe. */
  explicit AtomicFile(const std::string& path, Place place = Place::kBeside);
  /** Removes what was not committed. What is written where it lies stays as far as it was written.
   */
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  /** To write to, until commit(). */
  [[nodiscard]] int descriptor() const { return descriptor_; }

  /**
   * Brings what was written to the disk, closes the file and puts it in place; then has the system
   * write everything that it holds back, and so the change of names. After an error the former file
   * is still there, unless it was written where it lies. Raises NotReplaceable where only the last
   * step is refused. Call it once.
   */
  void commit();

 private:
  void openInPlace();
  void closeFile();

  std::string path_;     ///< of the file that is replaced, behind any links
  std::string written_;  ///< of the file that is being written
  int descriptor_ = -1;
};

}  // namespace tevra
