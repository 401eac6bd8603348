#include "tools/cli/stop_signals.h"

#include <pthread.h>

#include <utility>

namespace tevra::tools {

StopSignals::StopSignals(std::function<void()> action, std::chrono::milliseconds patience)
    : patience_(patience) {
  sigemptyset(&signals_);
  sigaddset(&signals_, SIGINT);
  sigaddset(&signals_, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals_, &before_);
  waiter_ = std::thread([this, action = std::move(action)] { wait(action); });
}

void StopSignals::wait(const std::function<void()>& action) {
  int signal = 0;
  sigwait(&signals_, &signal);
  if (ending_) {
    return;
  }
  action();
  const auto patience = std::chrono::steady_clock::now() + patience_;
  do {
    sigwait(&signals_, &signal);
  } while (!ending_ && std::chrono::steady_clock::now() < patience);
  if (!ending_) {
    std::signal(signal, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
    raise(signal);
  }
}

StopSignals::~StopSignals() {
  ending_ = true;
  pthread_kill(waiter_.native_handle(), SIGINT);  // only that thread gets it
  waiter_.join();
  const timespec now{};
  while (sigtimedwait(&signals_, nullptr, &now) > 0) {
    // came again, and would end the process after all
  }
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace tevra::tools
