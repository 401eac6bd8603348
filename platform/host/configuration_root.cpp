#include "platform/configuration_root.h"

#include "platform/host/environment.h"

namespace tevra {
namespace {

std::string readConfigurationRoot() {
  std::string root = host::environmentText("TEVRA_CONF_ROOT", "/etc/tevra/conf");
  while (!root.empty() && root.back() == '/') {
    root.pop_back();
  }
  return root;  // Empty stands for the file system's own root: "" + "/Tornel".
}

std::string& root() {
  static std::string directory = readConfigurationRoot();
  return directory;
}

}  // namespace

const std::string& configurationRoot() {
  return root();
}

void setConfigurationRoot(const std::string& directory) {
  root() = directory;
}

}  // namespace tevra
