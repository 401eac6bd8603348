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
