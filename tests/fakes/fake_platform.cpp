#include "tests/fakes/fake_platform.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>

#include "platform/configuration_root.h"
#include "platform/dvb_utils.h"
#include "platform/module_utils.h"

namespace tevra::fake {
namespace {

std::mutex logMutex;
std::vector<LogLine> log;        // guarded by logMutex
std::vector<std::string> calls;  // guarded by logMutex

void called(const char* function) {
  std::lock_guard lock(logMutex);
  calls.emplace_back(function);
}

std::string makeRoot() {
  std::string pattern = (std::filesystem::temp_directory_path() / "tornel-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("no temporary directory");
  }
  return pattern;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << line.level << " '" << line.tag << "' \"" << line.text << '"';
}

Platform& platform() {
  static Platform instance;
  return instance;
}

std::vector<LogLine> logLines() {
  std::lock_guard lock(logMutex);
  return log;
}

std::vector<LogLine> logLines(int level) {
  std::vector<LogLine> lines;
  for (const LogLine& line : logLines()) {
    if (line.level <= level) {
      lines.push_back(line);
    }
  }
  return lines;
}

bool logged(int level, const std::string& text) {
  return timesLogged(level, text) > 0;
}

int timesLogged(int level, const std::string& text) {
  int count = 0;
  for (const LogLine& line : logLines()) {
    count += line.level == level && line.text == text ? 1 : 0;
  }
  return count;
}

std::vector<std::string> platformCalls() {
  std::lock_guard lock(logMutex);
  return calls;
}

void clearLog() {
  std::lock_guard lock(logMutex);
  log.clear();
  calls.clear();
}

PlatformTest::PlatformTest() {
  platform() = Platform();
  platform().configurationRoot = makeRoot();
  clearLog();
}

PlatformTest::~PlatformTest() {
  std::error_code ignored;
  std::filesystem::remove_all(platform().configurationRoot, ignored);
}

std::string PlatformTest::path(const std::string& relative) {
  return platform().configurationRoot + "/" + relative;
}

}  // namespace tevra::fake

using tevra::fake::platform;

extern "C" {

void log_setup(int level, int mode) {
  tevra::fake::called(__func__);
  platform().logSetups.emplace_back(level, mode);
}

void log_function(int level, const char* tag, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char* text = nullptr;
  const int length = vasprintf(&text, format, arguments);
  va_end(arguments);
  if (length < 0) {
    return;
  }
  const std::unique_ptr<char, decltype(&free)> owned(text, &free);
  std::lock_guard lock(tevra::fake::logMutex);
  tevra::fake::log.push_back(
      {level, tag == nullptr ? "(null)" : tag, std::string(text, static_cast<size_t>(length))});
  tevra::fake::calls.push_back(tevra::fake::log.back().text);
}

int watchdog_register_task() {
  tevra::fake::called(__func__);
  return platform().watchdogTask;
}

void watchdog_kick(int task) {
  tevra::fake::called(__func__);
  platform().kicks.push_back(task);
  if (platform().onKick) {
    platform().onKick();
  }
}

int watchdog_unregister_task(int task) {
  platform().unregistered.push_back(task);
  return platform().watchdogUnregisterResult;
}

int get_module_id(int* id) {
  platform().moduleIdPresets.push_back(*id);
  *id = platform().moduleIdStored;
  return platform().moduleType;
}

int get_module_slot() {
  return platform().moduleSlot;
}

void ShowVersionExitl(int unused, const char* version) {
  platform().versionsShown.emplace_back(unused, version);
  throw tevra::fake::VersionShown();
}

void SignalServiceIsStarted() {
  tevra::fake::called(__func__);
  ++platform().serviceStartedSignals;
}

int createDirectory(const char* path, mode_t mode) {
  if (platform().createDirectoryResult != 0) {
    return platform().createDirectoryResult;
  }
  std::error_code error;
  if (std::filesystem::create_directories(path, error)) {
    std::filesystem::permissions(path, static_cast<std::filesystem::perms>(mode), error);
  }
  return error || !std::filesystem::is_directory(path) ? 1 : 0;
}

uint64_t GetUTCTime() {
  return platform().utcTime;
}

int IsSystemTimeSet() {
  return platform().isSystemTimeSetResult;
}

}  // extern "C"

namespace tevra {

const std::string& configurationRoot() {
  return platform().configurationRoot;
}

void setConfigurationRoot(const std::string& directory) {
  platform().configurationRoot = directory;
}

uint8_t bcd4_2_bin(uint8_t bcd) {
  return static_cast<uint8_t>((bcd >> 4) * 10 + (bcd & 0x0F));
}

uint8_t bin_2_bcd4(uint8_t value) {
  return static_cast<uint8_t>(((value / 10) << 4) | (value % 10));
}

bool dvbTextFromUTF8(const std::string& utf8, std::string& dvb) {
  if (platform().textFromUTF8) {
    return platform().textFromUTF8(utf8, dvb);
  }
  dvb = utf8;
  return true;
}

bool getEnglishAudioCode(const std::string& code, std::string& englishCode, std::string& other) {
  if (platform().englishAudioCode) {
    return platform().englishAudioCode(code, englishCode, other);
  }
  englishCode = code;
  other = code;
  return true;
}

}  // namespace tevra
