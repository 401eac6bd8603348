#include "bench/temporary_root.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace tevra::bench {

TemporaryRoot::TemporaryRoot()
    : path_((std::filesystem::temp_directory_path() / "tornel-bench-XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr || setenv("TEVRA_CONF_ROOT", path_.c_str(), 1) != 0) {
    throw std::runtime_error("cannot make a temporary directory");
  }
}

TemporaryRoot::~TemporaryRoot() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace tevra::bench
