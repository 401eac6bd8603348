#pragma once

#include <cstdint>
#include <memory>

#include <thrift/server/TServer.h>

namespace tevra {

/**
 * A running control server; empty when the MPTS index was not valid. Kept for the life of the
 * process: nothing stops the server. Destroying it logs that, at level 6, and no more: the server's
 * thread is detached and keeps what it uses.
 */
class ThreadedSimpleServer {
 public:
  ThreadedSimpleServer() = default;  ///< empty
  ~ThreadedSimpleServer();
  ThreadedSimpleServer(ThreadedSimpleServer&&) noexcept = default;  ///< leaves the other empty
  ThreadedSimpleServer& operator=(ThreadedSimpleServer&&) = delete;

  /** Whether there is no server in it. */
  [[nodiscard]] bool empty() const { return server_ == nullptr; }

 private:
  friend ThreadedSimpleServer startControlServer(int32_t mptsIndex);

  std::shared_ptr<apache::thrift::server::TServer> server_;
};

/**
 * Builds the handler and serves im_SIControlSrv for one MPTS on TCP 9224 + index, one connection at
 * a time, on a thread of its own. Returns once that thread listens. An index outside 0 to 3 is
 * logged and gives an empty result. A port in use ends the process.
 *
 * From then on what Thrift's runtime would print on standard error are lines of level 7: its
 * callers already log what matters. No other thread may use Thrift meanwhile.
 */
[[nodiscard]] ThreadedSimpleServer startControlServer(int32_t mptsIndex);

}  // namespace tevra
