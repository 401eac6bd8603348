#include "platform/configuration_root.h"

namespace tevra {

const std::string& configurationRoot() {
  static const std::string root = "/etc/tevra/conf";
  return root;
}

}  // namespace tevra
