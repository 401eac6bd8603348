#include "tests/system/mounted_tmpfs.h"

#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace tevra::test {
namespace {

constexpr unsigned long kSafeFlags = MS_NOSUID | MS_NODEV;

/** Leaves the mounts of everybody else, once; what then is mounted here stays here. */
std::string leaveCommonMounts() {
  if (unshare(CLONE_NEWNS) != 0) {
    return std::string("no mount namespace: ") + std::strerror(errno);
  }
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    return std::string("no private mounts: ") + std::strerror(errno);
  }
  return {};
}

}  // namespace

std::string MountedTmpfs::whyNot() {
  static const std::string reason = leaveCommonMounts();
  return reason;
}

MountedTmpfs::MountedTmpfs(const std::string& directory, const std::string& options)
    : directory_(directory) {
  if (!whyNot().empty() ||
      mount("tornel-test", directory.c_str(), "tmpfs", kSafeFlags, options.c_str()) != 0) {
    throw std::runtime_error("cannot mount on " + directory + " " + whyNot());
  }
}

MountedTmpfs::~MountedTmpfs() {
  (void)umount2(directory_.c_str(), MNT_DETACH);  // at the latest gone with the process
}

void MountedTmpfs::makeReadOnly() const {
  remount(MS_RDONLY, {});
}

void MountedTmpfs::makeWritable(const std::string& options) const {
  remount(0, options);
}

void MountedTmpfs::remount(unsigned long flags, const std::string& options) const {
  if (mount(nullptr, directory_.c_str(), nullptr, MS_REMOUNT | kSafeFlags | flags,
            options.c_str()) != 0) {
    throw std::runtime_error("cannot mount anew: " + directory_);
  }
}

}  // namespace tevra::test
