#include <poll.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "platform/module_utils.h"
#include "platform/mutex.h"

// The levels are syslog's own severities.
static_assert(kLogError == LOG_ERR && kLogDebug == LOG_DEBUG);

namespace {

std::atomic<int> highestLevel = kLogNotice;
std::atomic<bool> withConsole = false;

/** Held for a whole line: a pipe takes a long one in pieces. */
tevra::Mutex consoleMutex;

void openSyslog() {
  static std::once_flag opened;
  std::call_once(opened, [] { openlog("tornel", LOG_PID, LOG_DAEMON); });
}

/** The raw format where it cannot be expanded: better than no line. */
std::string expand(const char* format, va_list arguments) {
  char* expanded = nullptr;
  const int length = vasprintf(&expanded, format, arguments);
  if (length < 0) {
    return format;
  }
  const std::unique_ptr<char, decltype(&std::free)> owner(expanded, &std::free);
  return {expanded, static_cast<size_t>(length)};
}

/** One write where the descriptor takes it at once; a line that cannot be written is lost. */
void writeToConsole(const std::string& line) {
  const tevra::MutexLock lock(consoleMutex);
  size_t written = 0;
  while (written < line.size()) {
    const ssize_t result = write(STDERR_FILENO, line.data() + written, line.size() - written);
    if (result > 0) {
      written += static_cast<size_t>(result);
    } else if (result < 0 && errno == EAGAIN) {
      // Whoever shares the terminal or pipe may have made it non-blocking.
      pollfd console = {STDERR_FILENO, POLLOUT, 0};
      (void)poll(&console, 1, -1);  // The next write tells how it went.
    } else if (result == 0 || errno != EINTR) {
      return;
    }
  }
}

void writeLine(int level, const char* tag, const std::string& message) {
  const bool tagged = tag != nullptr && *tag != '\0';
  const std::string text = tagged ? std::string(tag) + " " + message : message;
  openSyslog();
  syslog(std::clamp<int>(level, kLogError, kLogDebug), "%s", text.c_str());
  if (withConsole) {
    writeToConsole(std::to_string(level) + " " + text + "\n");
  }
}

}  // namespace

extern "C" {

void log_setup(int level, int mode) {
  highestLevel = level;
  withConsole = mode == kLogWithConsole;
  openSyslog();
}

void log_function(int level, const char* tag, const char* format, ...) {
  if (level > highestLevel) {
    return;
  }
  const int savedErrno = errno;  // Callers log first and look at errno afterwards.
  va_list arguments;
  va_start(arguments, format);
  try {
    writeLine(level, tag, expand(format, arguments));
  } catch (const std::bad_alloc&) {
    // A lost line must not end the work that it tells of.
  }
  va_end(arguments);
  errno = savedErrno;
}

}  // extern "C"
