#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "control/si_control_handler.h"
#include "platform/module_utils.h"
#include "records/global_output.h"
#include "store/record_file.h"
#include "tests/control/tables.h"
#include "tests/fakes/fake_platform.h"

namespace tevra::test {

using fake::LogLine;

/** The levels and texts of log lines, for short expectations. */
using Lines = std::vector<std::pair<int, std::string>>;

/** What a handler without MainTask logs at every notification. */
inline constexpr const char* kRefused =
    "Can't access to Notify server. EXCEPTION: connect() failed: Connection refused";

/** Fixture: the files and the log around handlers. */
class HandlerTest : public fake::PlatformTest {
 protected:
  /** Silences Thrift's own output, which is the control server's business. */
  HandlerTest() {
    globalOutput().setOutputFunction([](const char*) {});
  }

  [[nodiscard]] static std::string tableStorePath(int mptsIndex = 0) {
    return path("Tornel/TableStoreFile" + std::to_string(mptsIndex));
  }
  [[nodiscard]] static std::string eitVersionPath(int mptsIndex = 0) {
    return path("Tornel/EITTableVersionStoreFile" + std::to_string(mptsIndex));
  }

  static void writeFile(const std::string& file, const TableStoreFile& record) {
    write(file, storedEntries(record));
  }
  static void writeFile(const std::string& file, const EITTableVersionStoreFile& record) {
    write(file, storedEntries(record));
  }

  [[nodiscard]] static std::map<int32_t, TableStore> savedTableStores(int mptsIndex = 0) {
    TableStoreFile record;
    if (readRecordFromFile(tableStorePath(mptsIndex), record) != 0) {
      throw std::runtime_error("no table store file");
    }
    return record.tableStores;
  }
  [[nodiscard]] static std::map<int32_t, EITTableVersionStore> savedEITVersions(int mptsIndex = 0) {
    EITTableVersionStoreFile record;
    if (readRecordFromFile(eitVersionPath(mptsIndex), record) != 0) {
      throw std::runtime_error("no EIT version file");
    }
    return record.versionStores;
  }

  /** All lines since the last clearLog. Fails the test when one carries a tag. */
  [[nodiscard]] static Lines lines() {
    Lines all;
    for (const LogLine& line : fake::logLines()) {
      EXPECT_EQ("", line.tag) << line;
      all.emplace_back(line.level, line.text);
    }
    return all;
  }

 private:
  template <class Record>
  static void write(const std::string& file, const Record& record) {
    if (createDirectory(path("Tornel").c_str(), 0755) != 0 ||
        writeRecordToFile(file, record) != 0) {
      throw std::runtime_error("cannot write " + file);
    }
  }
};

}  // namespace tevra::test
