#include "store/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace tevra {
namespace {

constexpr mode_t kFileMode = 0600;
constexpr int kInPlace = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK;
constexpr int kBeside = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;

[[noreturn]] void raise(const std::string& what, const std::string& path, int error = errno) {
  throw std::system_error(error, std::generic_category(), what + " " + path);
}

/** Where `path` leads, whether or not anything lies there. */
std::string behindLinks(const std::string& path) {
  constexpr int kMaxLinks = 40;  // as the kernel follows
  std::filesystem::path place = path;
  for (int followed = 0; followed < kMaxLinks; ++followed) {
    std::error_code isNoLink;
    const std::filesystem::path target = std::filesystem::read_symlink(place, isNoLink);
    if (isNoLink) {
      return place;
    }
    place = place.parent_path() / target;  // an absolute target stands for itself
  }
  raise("cannot follow", path, ELOOP);
}

/** Nothing but a file may be replaced by one. */
bool isReplaceable(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

/** What then lies beside it is a directory. */
bool cannotBeMadeBeside(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == EEXIST;
}

/** A mount point, or a file of somebody else in a directory where only its owner may. */
bool cannotBeReplaced(int error) {
  return error == EBUSY || error == EPERM || error == EACCES;
}

}  // namespace

AtomicFile::AtomicFile(const std::string& path, Place place)
    : path_(behindLinks(path)), written_(path_ + ".new") {
  if (place == Place::kInPlace || !isReplaceable(path_)) {
    openInPlace();
    return;
  }
  (void)unlink(written_.c_str());  // a crash may have left it, anybody may have made it
  descriptor_ = open(written_.c_str(), kBeside, kFileMode);
  if (descriptor_ >= 0) {
    return;
  }
  if (!cannotBeMadeBeside(errno)) {
    raise("cannot open", written_);
  }
  openInPlace();
}

void AtomicFile::openInPlace() {
  written_ = path_;
  descriptor_ = open(path_.c_str(), kInPlace, kFileMode);
  if (descriptor_ < 0) {
    raise("cannot open", path_);
  }
}

AtomicFile::~AtomicFile() {
  if (descriptor_ >= 0) {
    (void)close(descriptor_);
  }
  if (written_ != path_) {
    (void)unlink(written_.c_str());
  }
}

void AtomicFile::commit() {
  if (fsync(descriptor_) != 0 && errno != EINVAL) {  // a device or a pipe has nothing to sync
    raise("cannot sync", written_);
  }
  closeFile();
  if (written_ != path_) {
    if (rename(written_.c_str(), path_.c_str()) != 0) {
      const int error = errno;
      if (cannotBeReplaced(error)) {
        throw NotReplaceable(error, "cannot replace " + path_);
      }
      raise("cannot replace", path_, error);
    }
    written_ = path_;
  }
  sync();
}

/** Whatever close() returns, the descriptor is no longer ours: close(2). */
void AtomicFile::closeFile() {
  const int descriptor = descriptor_;
  descriptor_ = -1;
  if (close(descriptor) != 0 && errno != EINTR) {
    raise("cannot close", written_);
  }
}

}  // namespace tevra
