// The least that a device's library must define: sixteen functions. A board with two multiplexes in
// slot 4, whose log and watchdog are standard error and whose clock is never set. A program that is
// linked with it needs nothing of the host's platform.
#include "platform/dvb_utils.h"
#include "platform/module_utils.h"

#include <sys/stat.h>

#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kTask = 7;

int highestLevel = kLogDebug;

}  // namespace

extern "C" {

void log_setup(int level, int /*mode*/) {
  highestLevel = level;
}

void log_function(int level, const char* tag, const char* format, ...) {
  if (level > highestLevel) {
    return;
  }
  const int error = errno;
  std::va_list arguments;
  va_start(arguments, format);
  std::fprintf(stderr, "board %d %s", level, tag != nullptr ? tag : "");
  std::vfprintf(stderr, format, arguments);
  std::fputc('\n', stderr);
  va_end(arguments);
  errno = error;
}

int watchdog_register_task(void) {
  return kTask;
}

void watchdog_kick(int task) {
  std::fprintf(stderr, "board kick %d\n", task);
}

int watchdog_unregister_task(int task) {
  return task == kTask ? 0 : -1;
}

int get_module_id(int* id) {
  *id = kModuleTypeTwoMptsB;
  return *id;
}

int get_module_slot(void) {
  return 4;
}

void ShowVersionExitl(int /*unused*/, const char* version) {
  std::printf("%s\n", version);
  std::exit(EXIT_SUCCESS);
}

void SignalServiceIsStarted(void) {
  std::fputs("board started\n", stderr);
}

int createDirectory(const char* path, mode_t mode) {
  return mkdir(path, mode) == 0 || errno == EEXIST ? 0 : -1;  // a board's image has the parents
}

uint64_t GetUTCTime(void) {
  return 0xC079124500;  // 1993-10-13 12:45:00; unused for as long as the clock is not set
}

int IsSystemTimeSet(void) {
  return 1;
}

}  // extern "C"

namespace tevra {

uint8_t bcd4_2_bin(uint8_t bcd) {
  return static_cast<uint8_t>((bcd >> 4) * 10 + (bcd & 0xF));
}

uint8_t bin_2_bcd4(uint8_t value) {
  return static_cast<uint8_t>(value / 10 << 4 | value % 10);
}

bool dvbTextFromUTF8(const std::string& utf8, std::string& dvb) {
  for (const char byte : utf8) {
    if (static_cast<unsigned char>(byte) > 0x7E) {
      return false;
    }
  }
  dvb = utf8;  // ASCII is the same in DVB's first table
  return true;
}

bool getEnglishAudioCode(const std::string& code, std::string& englishCode, std::string& other) {
  std::string lower;
  for (const char letter : code) {
    if (std::isalpha(static_cast<unsigned char>(letter)) == 0) {
      return false;
    }
    lower += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  }
  if (lower.size() != 3) {
    return false;
  }
  englishCode = lower;
  other = lower;
  return true;
}

}  // namespace tevra
