#include "app/start_up.h"

#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>

#include "app/command_line.h"
#include "control/control_server.h"
#include "platform/module_utils.h"

namespace tevra {
namespace {

constexpr unsigned kKickIntervalSeconds = 5;

/** 0, which the watchdog's other functions then get, when it refuses. */
int registerWithWatchdog() {
  const int task = watchdog_register_task();
  if (task == 0) {
    log_function(kLogError, kNoTag, "Couldn't register task for WD");
  }
  return task;
}

int moduleType() {
  int id = 255;
  return get_module_id(&id);
}

int refuseMpts(int set, int task) {
  log_function(kLogError, kNoTag, "Tornel: MPTSid [%d] not supported.", set);
  if (watchdog_unregister_task(task) != 0) {
    log_function(kLogWarning, kNoTag, "Couldn't unregister task for WD");
  }
  return EXIT_SUCCESS;
}

/**
 * Memory that a large table took goes back to the system. glibc's own limit grows with every large
 * block that is freed, up to 64 MiB, and with it what the process keeps for good.
 */
void keepLittleFreeMemory() {
#if defined(M_TRIM_THRESHOLD)
  constexpr int kKept = 1024 * 1024;
  (void)mallopt(M_TRIM_THRESHOLD, kKept);
#endif
}

/** Lack of memory for what the files hold ends the process: it would begin anew and replace them.
 */
ThreadedSimpleServer startServer(int32_t set) {
  try {
    return startControlServer(set);
  } catch (const std::exception& exception) {
    log_function(kLogError, kNoTag, "Tornel %d cannot start. EXCEPTION: %s", set, exception.what());
    throw;
  }
}

[[noreturn]] void feedWatchdog(int task) {
  for (;;) {
    watchdog_kick(task);
    sleep(kKickIntervalSeconds);
  }
}

}  // namespace

int highestMptsIndex(int moduleType) {
  switch (moduleType) {
    case kModuleTypeFourMpts:
      return 3;
    case kModuleTypeTwoMptsA:
    case kModuleTypeTwoMptsB:
      return 1;
    default:
      log_function(kLogError, kNoTag, "Tornel: Module type [%d] not supported!", moduleType);
      return 0;
  }
}

int runTornel(int argc, char** argv) {
  const CommandLineOptions options = parseCommandLine(argc, argv);
  if (options.version) {
    ShowVersionExitl(0, TORNEL_VERSION);
  }
  keepLittleFreeMemory();
  // A reader of standard error that goes away must not take the service with it.
  (void)std::signal(SIGPIPE, SIG_IGN);
  log_setup(options.level, options.console ? kLogWithConsole : kLogWithoutConsole);
  const int task = registerWithWatchdog();
  if (options.set > highestMptsIndex(moduleType())) {
    return refuseMpts(options.set, task);
  }
  [[maybe_unused]] const ThreadedSimpleServer server = startServer(options.set);
  SignalServiceIsStarted();
  log_function(kLogWarning, kNoTag, "Tornel %d started ...", options.set);
  feedWatchdog(task);
}

}  // namespace tevra
