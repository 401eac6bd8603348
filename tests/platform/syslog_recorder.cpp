#include "tests/platform/syslog_recorder.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace tevra::test {
namespace {

std::mutex mutex;
std::vector<SyslogLine> lines;        // guarded by mutex
std::vector<SyslogOpening> openings;  // guarded by mutex

void record(int priority, const char* format, va_list arguments) {
  char* text = nullptr;
  if (vasprintf(&text, format, arguments) < 0) {
    std::abort();
  }
  const std::lock_guard lock(mutex);
  lines.push_back({priority, text});
  std::free(text);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const SyslogLine& line) {
  return out << line.priority << " \"" << line.text << '"';
}

std::vector<SyslogLine> takeSyslogLines() {
  const std::lock_guard lock(mutex);
  return std::exchange(lines, {});
}

std::vector<SyslogOpening> syslogOpenings() {
  const std::lock_guard lock(mutex);
  return openings;
}

}  // namespace tevra::test

// The linker sends calls of openlog, syslog and __syslog_chk here; the names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

void __wrap_openlog(const char* ident, int option, int facility) {
  const std::lock_guard lock(tevra::test::mutex);
  tevra::test::openings.push_back({ident, option, facility});
}

void __wrap_syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  tevra::test::record(priority, format, arguments);
  va_end(arguments);
}

void __wrap___syslog_chk(int priority, int /*flag*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  tevra::test::record(priority, format, arguments);
  va_end(arguments);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
