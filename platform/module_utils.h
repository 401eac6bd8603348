#pragma once

#include <sys/types.h>

#include <cstdint>

/**
 * @file
 * Module utilities of the device, as the maker's library provides them.
 *
 * platform/host/ implements them for any Debian machine; a device build links its own library
 * instead. C linkage, so that a library in either language fits. All functions may be called from
 * any thread.
 */

extern "C" {

/** Log levels; smaller is more severe. */
enum LogLevel {
  kLogError = 3,
  kLogWarning = 4,
  kLogNotice = 5,
  kLogInformation = 6,
  kLogDebug = 7,
};

/** The tag of a line that has none: empty, not null, since a library may look at it. */
constexpr const char* kNoTag = "";

/** Modes of log_setup. */
enum LogMode {
  kLogWithoutConsole = 1,
  kLogWithConsole = 3,
};

/** Module types of the device that the task knows. */
enum ModuleType {
  kModuleTypeTwoMptsA = 0,
  kModuleTypeFourMpts = 5,
  kModuleTypeTwoMptsB = 6,
};

/** Sets the highest level printed and where lines go. Called once, before any other thread runs. */
void log_setup(int level, int mode);

/**
 * Writes one line; `format` as for printf. `tag` is never null; kNoTag for none.
 * Lines above the level of log_setup cost no formatting.
 */
void log_function(int level, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/** Registers the process with the watchdog. Returns its task number, 0 on failure. */
int watchdog_register_task(void);

/** Tells the watchdog that the task is alive. */
void watchdog_kick(int task);

/** Returns 0 on success. */
int watchdog_unregister_task(int task);

/** Returns the module type; what it stores through `id` is not used by this program. */
int get_module_id(int* id);

/** Returns the slot that the module is plugged into; 3 is the first input module's. */
int get_module_slot(void);

/** Prints the version text on standard output and ends the process with status 0. */
[[noreturn]] void ShowVersionExitl(int unused, const char* version);

/** Tells the platform that the service accepts connections. */
void SignalServiceIsStarted(void);

/** Creates `path` and its missing parents with `mode`. An existing directory is success. Returns 0
 * on success. */
int createDirectory(const char* path, mode_t mode);

/** Current UTC time as a DVB time value: MJD from bit 24 up, BCD hours, minutes, seconds (EN 300
 * 468 annex C). */
uint64_t GetUTCTime(void);

/** Returns 0 when the system clock has been set, non-zero while it has not. */
int IsSystemTimeSet(void);

}  // extern "C"
