#include "tools/listen/listen_watch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <utility>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

constexpr int kForEver = -1;

/** Rounded up, so that the time has come afterwards; a long time in several turns. */
int milliseconds(std::chrono::steady_clock::duration time) {
  const auto count = std::chrono::ceil<std::chrono::milliseconds>(time).count();
  return static_cast<int>(std::clamp<int64_t>(count, 0, INT_MAX));
}

}  // namespace

ListenWatch::ListenWatch(const Limits& limits, std::function<void(Reason reason)> action)
    : limits_(limits), wakeUp_(eventfd(0, EFD_CLOEXEC)) {
  if (wakeUp_ < 0) {
    throw ToolError("cannot watch the time: " + std::string(std::strerror(errno)));
  }
  thread_ = std::thread([this, action = std::move(action)] {
    if (const auto reason = wait()) {
      action(*reason);
    }
  });
}

ListenWatch::~ListenWatch() {
  (void)eventfd_write(wakeUp_, 1);  // fails only when the counter is full
  thread_.join();
  close(wakeUp_);
}

std::optional<ListenWatch::Deadline> ListenWatch::nextDeadline() const {
  std::optional<Deadline> next;
  if (limits_.silence) {
    next = {Reason::kSilence, Clock::time_point(last_.load()) + *limits_.silence};
  }
  if (limits_.time && (!next || start_ + *limits_.time < next->time)) {
    next = {Reason::kTimeIsOver, start_ + *limits_.time};
  }
  return next;
}

std::optional<ListenWatch::Reason> ListenWatch::wait() const {
  std::array<pollfd, 2> files = {{{wakeUp_, POLLIN, 0}, {limits_.output, 0, 0}}};
  while (true) {
    const auto deadline = nextDeadline();
    const auto now = Clock::now();
    if (deadline && deadline->time <= now) {
      return deadline->reason;
    }
    const int patience = deadline ? milliseconds(deadline->time - now) : kForEver;
    if (poll(files.data(), files.size(), patience) < 0) {
      continue;  // interrupted by a signal
    }
    if (files[0].revents != 0) {
      return std::nullopt;
    }
    if ((files[1].revents & (POLLERR | POLLHUP)) != 0) {
      return Reason::kNobodyReads;
    }
    if (files[1].revents != 0) {
      files[1].fd = -1;  // not open: poll would report it again and again
    }
  }
}

}  // namespace tevra::tools
