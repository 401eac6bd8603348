#pragma once

#include <memory>
#include <thread>

#include <thrift/server/TServer.h>

#include "tests/tools/support/recording_daemon.h"

namespace tevra::tools::test {

/**
 * Serves a RecordingDaemon on a free port of the loopback interface, as the real one serves, while
 * it lives.
 */
class FakeDaemonServer {
 public:
  FakeDaemonServer();
  ~FakeDaemonServer();
  FakeDaemonServer(const FakeDaemonServer&) = delete;
  FakeDaemonServer& operator=(const FakeDaemonServer&) = delete;

  [[nodiscard]] int port() const { return port_; }
  /** Look at it only while no client is connected. */
  [[nodiscard]] RecordingDaemon& daemon() { return *daemon_; }

 private:
  std::shared_ptr<RecordingDaemon> daemon_;
  std::shared_ptr<apache::thrift::server::TServer> server_;
  int port_ = 0;
  std::thread thread_;
};

}  // namespace tevra::tools::test
