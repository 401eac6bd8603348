#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include <thrift/TApplicationException.h>

#include "tests/platform/temporary_directory.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/process_figures.h"

namespace tevra::test {

/** What came back for a message. */
struct Answer {
  /** A call that ends in closing the connection has none. */
  enum class Kind { kNone, kReply, kException };

  Kind kind = Kind::kNone;
  std::string method = {};
  int32_t sequence = 0;
  apache::thrift::TApplicationException exception = {};
};

/**
 * A daemon that has seen ordinary calls and now meets clients that wish it ill. When the test ends,
 * however it went, the next client must be served, and memory and descriptors be as before.
 */
class HostileClients : public testing::Test {
 protected:
  HostileClients();
  void TearDown() override;

  /** All that the daemon sends for `bytes`, nothing more being sent, until it closes the
   * connection. Fails the test when it does neither in time. */
  std::string exchange(const std::string& bytes);

  /** The first answer to `message` in a frame of its own; a handler that failed is a failure. */
  Answer answerTo(const std::string& message);

  /** `message` is understood, whatever it lacks. */
  void expectReply(const std::string& method, const std::string& message);

  /** Sends `bytes` and waits, sending no end: the daemon must close the connection by itself. */
  void expectRefusal(const std::string& bytes);

  /** A new client gets an answer. */
  void expectService();

  /** By how many kilobytes memory was at its highest above what it was before. */
  [[nodiscard]] int64_t peakGrowth(const std::function<void()>& attack) const;

  /** The same of what was mapped, touched or not, counted from the highest so far. */
  [[nodiscard]] int64_t mappedGrowth(const std::function<void()>& attack) const;

  Daemon& daemon() { return daemon_; }

 private:
  TemporaryDirectory root_;
  Daemon daemon_;
  ProcessFigures figures_{daemon_.pid()};
  int64_t residentAtFirst_ = 0;
  int64_t descriptorsAtFirst_ = 0;
  std::string lastSent_;
};

}  // namespace tevra::test
