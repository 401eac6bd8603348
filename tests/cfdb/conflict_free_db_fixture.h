#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "cfdb/conflict_free_db.h"
#include "cfdb/dvb_time.h"
#include "store/record_file.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/tables.h"

namespace tevra::test {

/** Chain 0 of a type-5 module in slot 3: PIDs 100 to 299, the first handed out is 101. The log
 * starts empty. */
class ConflictFreeDBFixture : public fake::PlatformTest {
 protected:
  ConflictFreeDBFixture() { fake::clearLog(); }

  static std::string file() { return path("PIDRemap0"); }
  static bool fileExists() { return std::filesystem::exists(file()); }
  static void removeFile() { std::filesystem::remove(file()); }

  /** What is on disk; default values if nothing. */
  static PIDRemap saved() {
    PIDRemap record;
    (void)readRecordFromFile(file(), record);  // a missing file shows in the record
    return record;
  }

  /** Events are moved by this many seconds from now on. */
  void setOffset(int64_t seconds) {
    constexpr uint64_t kSystemTime = uint64_t{2000000} << 24;
    constexpr int64_t kAnother = 1000000;  // the tolerance of a minute is not what is asked here
    fake::platform().utcTime = kSystemTime;
    for (const int64_t offset : {seconds + kAnother, seconds}) {
      (void)timeOffset_.updateTimeOffset(makeTot(restampDVBTime(kSystemTime, -offset)));
    }
    fake::clearLog();
  }

  TimeOffset timeOffset_;
  EITVersions eitVersions_{0};
  ConflictFreeDB database_{0, timeOffset_, eitVersions_};
};

}  // namespace tevra::test
