#pragma once

#include <filesystem>
#include <string>

#include "cfdb/conflict_free_db.h"
#include "store/record_file.h"
#include "tests/cfdb/fake_owner.h"
#include "tests/fakes/fake_platform.h"

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

  FakeOwner owner_;
  ConflictFreeDB database_{0, owner_};
};

}  // namespace tevra::test
