#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace tevra::test {

/** Gives one environment variable a value, or none for null, and puts the former state back at the
 * end. */
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* former = std::getenv(name)) {
      former_ = former;
    }
    set(value);
  }
  ~ScopedEnvironment() { set(former_ ? former_->c_str() : nullptr); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void set(const char* value) {
    if (value == nullptr) {
      unsetenv(name_);
    } else {
      setenv(name_, value, 1);
    }
  }

  const char* name_;
  std::optional<std::string> former_;
};

}  // namespace tevra::test
