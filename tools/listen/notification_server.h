#pragma once

#include <functional>
#include <memory>
#include <string>

#include <thrift/server/TServer.h>

#include "im_SINotifySrv.h"

namespace tevra::tools {

/**
 * Serves im_SINotifySrv in MainTask's place, one connection after the other, so that notifications
 * keep the order in which the daemon sends them.
 */
class NotificationServer {
 public:
  /** A connection from which nothing comes is given up after this. */
  static constexpr int kReceiveTimeoutSeconds = 10;

  /**
   * Port 0 is any free one. `onListening` is called on serve's thread with the port once
   * connections are accepted.
   */
  NotificationServer(const std::string& host, int port,
                     std::shared_ptr<thrift::in_module::im_SINotifySrvIf> handler,
                     std::function<void(int port)> onListening);

  /**
   * Serves until stop() is called. Raises ToolError when the port cannot be listened on or serving
   * fails.
   */
  void serve();
  /** May be called from any thread once onListening has been. */
  void stop();

 private:
  std::string address_;
  std::shared_ptr<apache::thrift::server::TServer> server_;
};

}  // namespace tevra::tools
