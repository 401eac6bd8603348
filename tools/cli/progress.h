#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>

namespace tevra::tools {

/**
 * Tells how far a stream has been read: on a terminal a bar that is drawn anew five times a second,
 * elsewhere a line every five seconds, so that short work says nothing.
 */
class Progress {
 public:
  using Clock = std::chrono::steady_clock;         ///< what it goes by
  using Now = std::function<Clock::time_point()>;  ///< what time it is

  /** How it tells. */
  struct Options {
    bool terminal = false;                              ///< a bar instead of lines
    std::optional<uint64_t> totalBytes = std::nullopt;  ///< nothing: neither share nor time left
  };

  /** The stream is being read from now on. `out` must outlive it. */
  Progress(std::ostream& out, const Options& options, Now now = Clock::now);

  /** So many bytes have been read and tables sent since construction. */
  void update(uint64_t bytes, uint64_t tables);

  /** Removes the bar. */
  void finish();

 private:
  [[nodiscard]] std::string text(uint64_t bytes, uint64_t tables, Clock::time_point now) const;

  std::ostream& out_;
  const Options options_;
  const Now now_;
  const Clock::time_point start_;
  Clock::time_point next_;
  bool drawn_ = false;
};

}  // namespace tevra::tools
