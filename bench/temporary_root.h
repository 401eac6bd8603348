#pragma once

#include <string>

namespace tevra::bench {

/** A configuration root of this process's own while it lives. Make it before any work. */
class TemporaryRoot {
 public:
  TemporaryRoot();
  ~TemporaryRoot();
  TemporaryRoot(const TemporaryRoot&) = delete;
  TemporaryRoot& operator=(const TemporaryRoot&) = delete;

 private:
  std::string path_;
};

}  // namespace tevra::bench
