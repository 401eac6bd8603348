#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tevra::fake {

struct LogLine {
  int level = 0;
  std::string tag;
  std::string text;

  bool operator==(const LogLine& other) const {
    return level == other.level && tag == other.tag && text == other.text;
  }
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

/** What the platform answers and what it has been told. Defaults: a type-5 module in slot 3, clock
 * set. */
struct Platform {
  int moduleType = 5;       ///< what get_module_id returns
  int moduleIdStored = -1;  ///< what it stores: no module type, so that using it shows
  int moduleSlot = 3;
  int watchdogTask = 7;
  int watchdogUnregisterResult = 0;
  uint64_t utcTime = 0;           ///< DVB time value
  int isSystemTimeSetResult = 0;  ///< 0: the clock has been set
  int createDirectoryResult = 0;  ///< non-zero: fails without touching the disk
  std::string configurationRoot;  ///< a fresh directory per test, see PlatformTest

  std::function<bool(const std::string&, std::string&)> textFromUTF8;  ///< empty: copies
  std::function<bool(const std::string&, std::string&, std::string&)>
      englishAudioCode;          ///< empty: copies
  std::function<void()> onKick;  ///< called at every kick; may throw to leave an endless loop

  std::vector<int> kicks;  ///< task of every watchdog_kick
  std::vector<int> unregistered;
  std::vector<std::pair<int, int>> logSetups;              ///< level, mode
  std::vector<std::pair<int, std::string>> versionsShown;  ///< arguments of ShowVersionExitl
  std::vector<int> moduleIdPresets;  ///< what get_module_id found where it stores
  int serviceStartedSignals = 0;
};

/** ShowVersionExitl ends the process on a device; here it raises this. */
struct VersionShown {};

Platform& platform();

/** Every line logged since the last clearLog, all levels, in order. Safe from any thread. */
std::vector<LogLine> logLines();

/** The lines of `level` or more severe. */
std::vector<LogLine> logLines(int level);

/** True when a line of that level and text was logged. */
bool logged(int level, const std::string& text);

/** How many lines of that level and text were logged. */
int timesLogged(int level, const std::string& text);

/** What start-up asks of the platform and what anybody logs, in one order since the last clearLog:
 * names of functions, texts of lines. Safe from any thread. */
std::vector<std::string> platformCalls();

/** Also forgets the calls. */
void clearLog();

/** Fixture: a platform in its default state and an empty configuration root that is removed
 * afterwards. */
class PlatformTest : public ::testing::Test {
 protected:
  PlatformTest();
  ~PlatformTest() override;

  /** Path below the configuration root. */
  [[nodiscard]] static std::string path(const std::string& relative);
};

}  // namespace tevra::fake
