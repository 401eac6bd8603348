#include "platform/configuration_root.h"

namespace tevra {
namespace {

std::string& root() {
  static std::string directory = "/etc/tevra/conf";
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
