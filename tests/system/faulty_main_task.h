#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace tevra::test {

/** MainTask as far as it accepts connections at once; what it does with each is up to the test. */
class FaultyMainTask {
 public:
  /** What becomes of a connection in the end. */
  enum class End { kClose, kReset, kStayOpen };

  /** Runs for every connection, on a thread of its own, until `stopping`. What stays open is closed
   * when the FaultyMainTask ends. */
  using Behaviour = std::function<End(int socket, const std::atomic<bool>& stopping)>;

  /** Listens when the constructor returns. */
  FaultyMainTask(int32_t mptsIndex, Behaviour behaviour);
  ~FaultyMainTask();
  FaultyMainTask(const FaultyMainTask&) = delete;
  FaultyMainTask& operator=(const FaultyMainTask&) = delete;

  /** Connections so far. */
  [[nodiscard]] size_t connections();

 private:
  void accept();
  void behave(int socket);

  const Behaviour behaviour_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  size_t connections_ = 0;
  std::set<int> open_;
  std::vector<std::thread> threads_;
  int listener_;
  std::thread acceptor_;
};

/** Never reads a byte. */
[[nodiscard]] FaultyMainTask::Behaviour thatNeverReads();

/** Reads `bytes` and closes in order, whatever is still under way. */
[[nodiscard]] FaultyMainTask::Behaviour thatClosesAfter(size_t bytes);

/** The same, but ends the connection with a reset. */
[[nodiscard]] FaultyMainTask::Behaviour thatResetsAfter(size_t bytes);

/** Sends `bytes` before it reads all there is. */
[[nodiscard]] FaultyMainTask::Behaviour thatAnswers(const std::string& bytes);

}  // namespace tevra::test
