#pragma once

#include <cstdint>
#include <limits>
#include <optional>

namespace tevra::tools::report {

/**
 * How far apart in time something comes, and whether it stays away for longer than it may while it
 * has to come. Times are in 27 MHz ticks and never fall.
 */
class Recurrence {
 public:
  /** It may stay away. */
  Recurrence() = default;
  /** It stays away for too long beyond `limit` ticks. */
  explicit Recurrence(int64_t limit) : limit_(limit) {}

  /** It came. */
  void come(int64_t time);
  /** From now on it has to come; nothing changes if it had to already. */
  void expect(int64_t time);
  /** From now on it need not come; the wait that ends here was one that it did not end. */
  void expectNoMore(int64_t time);

  ///@{
  /** Of the intervals between one coming and the next, wherever it had to come. */
  [[nodiscard]] uint64_t intervals() const { return intervals_; }
  [[nodiscard]] int64_t shortest() const { return shortest_; }
  [[nodiscard]] int64_t longest() const { return longest_; }
  [[nodiscard]] int64_t sum() const { return sum_; }
  ///@}

  /** Of all waits, also those from where it had to come first and to where it had to last. */
  [[nodiscard]] std::optional<int64_t> longestWait() const { return longestWait_; }
  /** How many waits were too long. */
  [[nodiscard]] uint64_t misses() const { return misses_; }

 private:
  void judge(int64_t time);

  int64_t limit_ = std::numeric_limits<int64_t>::max();
  std::optional<int64_t> last_;          // coming
  std::optional<int64_t> waitingSince_;  // while it has to come
  uint64_t intervals_ = 0;
  int64_t shortest_ = 0;
  int64_t longest_ = 0;
  int64_t sum_ = 0;
  std::optional<int64_t> longestWait_;
  uint64_t misses_ = 0;
};

}  // namespace tevra::tools::report
