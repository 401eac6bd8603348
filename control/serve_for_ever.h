#pragma once

#include <thrift/concurrency/Monitor.h>
#include <thrift/server/TServer.h>

namespace tevra::thrift {

/**
 * Hands over from the starting thread to the server thread: the former waits until the latter
 * listens. Callable from any thread.
 */
class TStartObserver : public apache::thrift::server::TServerEventHandler {
 public:
  /** Called by the server when it listens, before it accepts. */
  void preServe() override;

  /** Returns once preServe has been called. */
  void waitUntilStarted();

  /** Whether preServe has been called. */
  [[nodiscard]] bool started();

 private:
  apache::thrift::concurrency::Monitor monitor_;
  bool started_ = false;  // guarded by monitor_
};

}  // namespace tevra::thrift

namespace tevra {

/**
 * Runs `server`, whose event handler is `observer`, for as long as the process lives.
 *
 * Thrift's server ends when accept() fails, for lack of file descriptors for example, and the
 * process would stay deaf; an exception out of it, such as lack of memory for a connection, would
 * end the process. Either is logged here, and a second later it serves again. Over a
 * ControlServerSocket the port stays open meanwhile. An exception before the first client could
 * connect, such as a port in use, passes, to end the process.
 */
[[noreturn]] void serveForEver(apache::thrift::server::TServer& server,
                               thrift::TStartObserver& observer);

}  // namespace tevra
