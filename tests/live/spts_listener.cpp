#include "tests/live/spts_listener.h"

#include "tests/live/multiplex_player.h"

namespace tevra::test {
namespace {

constexpr std::chrono::milliseconds kSlice(100);
constexpr std::chrono::nanoseconds kSilence = std::chrono::milliseconds(500);

}  // namespace

void SptsListener::waitForSilence() const {
  const int64_t begin = stampTime();
  while (stampTime() - std::max(begin, lastTime_.load()) < kSilence.count()) {
    std::this_thread::sleep_for(kSlice);
  }
}

void SptsListener::stop() {
  isToStop_ = true;
  if (thread_.joinable()) {
    thread_.join();
    checker_.finish();
  }
}

void SptsListener::listen() {
  uint32_t missed = 0;
  while (true) {
    const size_t size = receiver_.receive(kSlice);
    if (size == 0 && isToStop_) {
      return;
    }
    if (size == 0) {
      continue;
    }
    if (receiver_.missed() != missed) {
      missed = receiver_.missed();
      checker_.forget();
    }
    lastTime_ = stampTime();
    checker_.take(receiver_.data(), size, lastTime_);
  }
}

}  // namespace tevra::test
