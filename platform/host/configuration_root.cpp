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

}  // namespace

const std::string& configurationRoot() {
  static const std::string root = readConfigurationRoot();
  return root;
}

}  // namespace tevra
