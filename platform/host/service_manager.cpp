#include <systemd/sd-daemon.h>

#include <atomic>

#include "platform/module_utils.h"

namespace {

/** The service manager watches the process as a whole, so there is one task. */
constexpr int kWatchdogTask = 1;

std::atomic<bool> registered = false;

/** `state` as in sd_notify(3). */
void notifyServiceManager(const char* state) {
  // Without a service manager there is nobody to tell, and with one that does not listen nothing to
  // do.
  (void)sd_notify(0, state);
}

}  // namespace

extern "C" {

int watchdog_register_task(void) {
  registered = true;
  return kWatchdogTask;
}

void watchdog_kick(int /*task*/) {
  notifyServiceManager("WATCHDOG=1");
}

int watchdog_unregister_task(int task) {
  return task == kWatchdogTask && registered.exchange(false) ? 0 : -1;
}

void SignalServiceIsStarted(void) {
  notifyServiceManager("READY=1");
}

}  // extern "C"
