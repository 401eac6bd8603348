#include "tools/engine/state_directory.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/module_utils.h"
#include "store/record_file.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

constexpr mode_t kDirectoryMode = 0755;
constexpr const char* kVersionsFolder = "/Tornel";
constexpr const char* kVersionsFile = "/Tornel/TableStoreFile0";

}  // namespace

StateDirectory::StateDirectory(const std::string& path) : path_(path) {
  if (mkdir(path.c_str(), kDirectoryMode) != 0 && errno != EEXIST) {
    fail(std::strerror(errno));
  }
  lock();
  requireWritable();
  requireReadable<PIDRemap>("/PIDRemap0");
  requireReadable<TableStoreFile>(kVersionsFile);
  requireReadable<EITTableVersionStoreFile>("/Tornel/EITTableVersionStoreFile0");
  versionsBefore_ = versionsFile();
}

void StateDirectory::fail(const std::string& reason) const {
  throw ToolError("cannot keep state in " + path_ + ": " + reason);
}

void StateDirectory::lock() {
  directory_.reset(opendir(path_.c_str()));
  if (directory_ == nullptr) {
    fail(std::strerror(errno));
  }
  if (flock(dirfd(directory_.get()), LOCK_EX | LOCK_NB) != 0) {
    fail(errno == EWOULDBLOCK ? "another run uses it: wait for that one, or name another directory"
                              : std::strerror(errno));
  }
}

void StateDirectory::requireWritable() const {
  const std::string folder = path_ + kVersionsFolder;
  if (access(path_.c_str(), W_OK | X_OK) != 0 ||
      createDirectory(folder.c_str(), kDirectoryMode) != 0 ||
      access(folder.c_str(), W_OK | X_OK) != 0) {
    fail("no file can be made there");
  }
}

template <class Record>
void StateDirectory::requireReadable(const std::string& name) const {
  const std::string file = path_ + name;
  struct stat status {};
  if (lstat(file.c_str(), &status) != 0 && errno == ENOENT) {
    return;
  }
  Record record;
  std::string reason;
  if (readRecordFromFile(file, record, &reason) != kRecordFileDone) {
    fail(file + " cannot be read (" + reason + "): remove it to begin anew");
  }
}

StateDirectory::FileIdentity StateDirectory::versionsFile() const {
  struct stat status {};
  if (stat((path_ + kVersionsFile).c_str(), &status) != 0) {
    return {};
  }
  constexpr int64_t kNanoseconds = 1'000'000'000;
  return {status.st_ino,
          int64_t{status.st_mtim.tv_sec} * kNanoseconds + int64_t{status.st_mtim.tv_nsec}};
}

void StateDirectory::requireSaved() const {
  if (versionsFile() == versionsBefore_) {
    fail("PIDs and versions could not be saved; is there room for them?");
  }
}

}  // namespace tevra::tools
