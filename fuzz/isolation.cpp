#include "fuzz/isolation.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "platform/module_utils.h"
#include "records/global_output.h"

namespace tevra::fuzz {
namespace {

/** In memory where the machine has such a place: most of the time would go into files. */
std::string makeRoot() {
  const bool inMemory = access("/dev/shm", W_OK) == 0;
  std::string path =
      (inMemory ? "/dev/shm" : std::filesystem::temp_directory_path().string()) + "/tornelXXXXXX";
  if (mkdtemp(path.data()) == nullptr) {
    throw std::runtime_error("no directory like " + path + " could be made");
  }
  return path;
}

class Root {
 public:
  Root() : path_(makeRoot()) {}
  ~Root() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  Root(const Root&) = delete;
  Root& operator=(const Root&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  const std::string path_;
};

}  // namespace

const std::string& configurationRoot() {
  static const Root root;
  return root.path();
}

void isolate() {
  setenv("TEVRA_CONF_ROOT", configurationRoot().c_str(), 1);
  log_setup(kLogDebug, kLogWithoutConsole);
  globalOutput().setOutputFunction([](const char*) {});
}

void emptyConfigurationRoot() {
  const std::string& root = configurationRoot();
  for (const char mpts : {'0', '1', '2', '3'}) {
    (void)unlink((root + "/PIDRemap" + mpts).c_str());
    (void)unlink((root + "/Tornel/TableStoreFile" + mpts).c_str());
    (void)unlink((root + "/Tornel/EITTableVersionStoreFile" + mpts).c_str());
  }
}

}  // namespace tevra::fuzz

// What the libraries and the system itself would call.
extern "C" {

int connect(int /*socket*/, const sockaddr* /*address*/, socklen_t /*size*/) {
  errno = ECONNREFUSED;
  return -1;
}

void openlog(const char* /*name*/, int /*options*/, int /*facility*/) {}
void syslog(int /*priority*/, const char* /*format*/, ...) {}
void __syslog_chk(  // NOLINT(bugprone-reserved-identifier): what _FORTIFY_SOURCE calls
    int /*priority*/, int /*flag*/, const char* /*format*/, ...) {}

void sync() noexcept {}
int syncfs(int /*fd*/) noexcept {
  return 0;
}
int fsync(int /*fd*/) {
  return 0;
}

}  // extern "C"
