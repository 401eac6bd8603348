#pragma once

#include <functional>
#include <string>

#include "records/control_service.h"

namespace tevra::tools {

/** Port of the first set's daemon; the others' follow. */
inline constexpr int kFirstControlPort = 9224;

/** Where a daemon is reached. */
struct DaemonAddress {
  std::string host = "127.0.0.1";  ///< name or address
  int port = kFirstControlPort;    ///< TCP
  int timeoutSeconds = 30;         ///< for connecting, and for every part of a call
};

/** "127.0.0.1:9224". */
[[nodiscard]] std::string nameOf(const DaemonAddress& address);

/**
 * Connects, runs `calls` with the daemon and disconnects. The daemon serves one connection at a
 * time, so everything that belongs together goes through one.
 *
 * Raises ToolError when the connection or a call fails; the connection is not usable afterwards.
 */
void withDaemon(const DaemonAddress& address,
                const std::function<void(thrift::in_module::im_SIControlSrvIf& daemon)>& calls);

}  // namespace tevra::tools
