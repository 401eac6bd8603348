#pragma once

#include <string>

#include "tests/platform/temporary_directory.h"

namespace tevra::test {

/** The service manager's end of the notification protocol (sd_notify(3)). */
class ServiceManager {
 public:
  ServiceManager();
  ~ServiceManager();
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;

  /** For NOTIFY_SOCKET. */
  [[nodiscard]] std::string path() const { return directory_ / "notify"; }

  /** The oldest message not yet taken, waited for; empty when none comes within kPatience. */
  [[nodiscard]] std::string next() const;

  /** True when no message is waiting. */
  [[nodiscard]] bool idle() const;

 private:
  TemporaryDirectory directory_;
  int socket_;
};

}  // namespace tevra::test
