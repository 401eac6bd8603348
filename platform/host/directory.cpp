#include <sys/stat.h>

#include <cerrno>
#include <new>
#include <string>
#include <vector>

#include "platform/module_utils.h"

namespace {

bool isDirectory(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/** Appends to `created` what had to be made. Another process may make the same directory meanwhile.
 */
bool ensureDirectory(const std::string& path, std::vector<std::string>& created) {
  if (isDirectory(path)) {
    return true;
  }
  created.push_back(path);
  if (mkdir(path.c_str(), S_IRWXU) == 0) {
    return true;
  }
  created.pop_back();
  return errno == EEXIST && isDirectory(path);
}

bool ensureEachDirectory(const std::string& path, std::vector<std::string>& created) {
  for (size_t end = 1; end <= path.size(); ++end) {
    const bool componentEnds = path[end - 1] != '/' && (end == path.size() || path[end] == '/');
    if (componentEnds && !ensureDirectory(path.substr(0, end), created)) {
      return false;
    }
  }
  return true;
}

/**
 * Deepest first, and only when all exist, so that a mode that denies its owner does not stand in
 * the way. chmod because mkdir's mode would pass through the umask.
 */
bool setModes(const std::vector<std::string>& created, mode_t mode) {
  bool done = true;
  for (auto path = created.rbegin(); path != created.rend(); ++path) {
    done = chmod(path->c_str(), mode) == 0 && done;
  }
  return done;
}

}  // namespace

extern "C" {

int createDirectory(const char* path, mode_t mode) {
  if (path == nullptr || *path == '\0') {
    return -1;
  }
  try {
    std::vector<std::string> created;
    const bool made = ensureEachDirectory(path, created);
    return setModes(created, mode) && made ? 0 : -1;
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

}  // extern "C"
