#pragma once

#include <functional>
#include <memory>
#include <string>

#include <thrift/server/TServer.h>

#include "tools/listen/notification.h"

namespace tevra::tools {

/**
 * Serves im_SINotifySrv in MainTask's place, one connection after the other, so that notifications
 * keep the order in which the daemon sends them.
 */
class NotificationServer {
 public:
  /** Is given each notification on serve's thread. What it raises is lost: the calls are oneway. */
  using Consumer = std::function<void(const Notification& notification)>;

  /**
   * Port 0 is any free one. `onListening` is called on serve's thread with the port once
   * connections are accepted.
   */
  NotificationServer(const std::string& host, int port, Consumer consumer,
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
