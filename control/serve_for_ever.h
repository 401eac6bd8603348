#pragma once

#include <memory>

#include <thrift/concurrency/Thread.h>
#include <thrift/server/TServer.h>

#include "control/start_observer.h"

namespace tevra {

/**
 * Runs a server for as long as the process lives.
 *
 * Thrift's server ends when accept() fails, for lack of file descriptors for example, and the
 * process would stay deaf; an exception out of it, such as lack of memory for a connection, would
 * end the process. This runnable logs either and serves again after a second. Over a
 * ControlServerSocket the port stays open meanwhile. An exception before the first client could
 * connect, such as a port in use, is left to end the process.
 */
class RestartingServer : public apache::thrift::concurrency::Runnable {
 public:
  /** `observer` must be the event handler of `server`: it tells whether that has listened. */
  RestartingServer(std::shared_ptr<apache::thrift::server::TServer> server,
                   std::shared_ptr<thrift::TStartObserver> observer);

  /** Never returns. */
  void run() override;

 private:
  void serveOnce();

  std::shared_ptr<apache::thrift::server::TServer> server_;
  std::shared_ptr<thrift::TStartObserver> observer_;
};

}  // namespace tevra
