#include "platform/host/environment.h"

#include <charconv>
#include <cstdlib>
#include <system_error>

namespace tevra::host {

std::string environmentText(const char* name, const char* fallback) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == '\0' ? fallback : value;
}

int environmentNumber(const char* name, int fallback) {
  const std::string text = environmentText(name, "");
  const char* end = text.data() + text.size();
  int number = 0;
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? number : fallback;
}

}  // namespace tevra::host
