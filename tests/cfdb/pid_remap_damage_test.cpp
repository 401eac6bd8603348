#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

#include "tests/cfdb/conflict_free_db_fixture.h"
#include "tests/support/files.h"
#include "tests/support/tables.h"

// Every byte of the mapping of a whole multiplex cut off or changed in turn.

namespace tevra::test {
namespace {

constexpr int32_t kTransportStream = 7;
constexpr int32_t kAnotherTransportStream = 8;
constexpr int32_t kServices = 6;

constexpr size_t kRepairEvery = 64;  // offsets; what repairs a file does not depend on its content

PAT patOf(int32_t transportStreamId) {
  PAT pat = makePat(transportStreamId, {{0, 16}});
  for (int32_t service = 1; service <= kServices; ++service) {
    PATProgram& program = pat.programs.emplace_back();
    program.programNumber = service;
    program.pid = 0x100 * service;
  }
  return pat;
}

class DamagedPidRemapFile : public ConflictFreeDBFixture {
 protected:
  DamagedPidRemapFile() {
    giveTables(database_, kTransportStream);
    text_ = readText(file());
    removeFile();
    ConflictFreeDB other(0, timeOffset_, eitVersions_);
    other.setConflictFreePAT(pat_, patOf(kAnotherTransportStream));
    repaired_ = readText(file());
    EXPECT_GT(text_.size(), 500U);
    EXPECT_NE(text_, repaired_);
  }

  static void giveTables(ConflictFreeDB& database, int32_t transportStreamId) {
    PAT pat;
    database.setConflictFreePAT(pat, patOf(transportStreamId));
    for (int32_t service = 1; service <= kServices; ++service) {
      const int32_t pid = 0x100 * service;
      PMT pmt;
      database.setConflictFreePMT(
          pmt, makePmt(service, pid + 1,
                       {makeStream(2, pid + 1), makeStream(4, pid + 2), makeStream(4, pid + 3)}));
    }
  }

  /** A disk may take its time over a file that is truncated. */
  static void place(const std::string& text) {
    removeFile();
    writeText(file(), text);
  }

  /** Started with `text`, a database that then gets another transport stream leaves a file like any
   * other. */
  void expectRepair(const std::string& text) {
    place(text);
    ConflictFreeDB database(0, timeOffset_, eitVersions_);
    database.setConflictFreePAT(pat_, patOf(kAnotherTransportStream));
    ASSERT_EQ(readText(file()), repaired_);
  }

  /** With `text`, the mapping is what is read of it as a whole, or none of it. */
  void expectAllOrNothing(const std::string& text) {
    place(text);
    PIDRemap record;
    const int result = readRecordFromFile(file(), record);
    ASSERT_TRUE(result == kRecordFileDone || result == kRecordFileFailed);
    const bool whole = result == kRecordFileDone && record.moduleSlot == 3;
    ConflictFreeDB database(0, timeOffset_, eitVersions_);
    if (!whole) {
      ASSERT_EQ(database.getConflictFreePID(0x101), 101);
      return;
    }
    for (const auto& [input, output] : record.inputToOutput) {
      ASSERT_EQ(database.getConflictFreePID(input), static_cast<uint16_t>(output));
    }
    for (const auto& [output, input] : record.outputToInput) {
      ASSERT_EQ(database.getInputPID(output), input);
    }
  }

  std::string text_;
  std::string repaired_;
  PAT pat_;
};

TEST_F(DamagedPidRemapFile, CutAnywhereIsAFreshMappingThatTheSameTablesRestore) {
  for (size_t length = 0; length < text_.size(); ++length) {
    SCOPED_TRACE("cut to " + std::to_string(length) + " bytes");
    expectAllOrNothing(text_.substr(0, length));
    if (length % kRepairEvery == 0) {
      expectRepair(text_.substr(0, length));
      place(text_.substr(0, length));
      ConflictFreeDB database(0, timeOffset_, eitVersions_);
      giveTables(database, kTransportStream);
      ASSERT_EQ(readText(file()), text_);
    }
  }
}

TEST_F(DamagedPidRemapFile, WithAnyByteChangedIsTakenAsAWholeOrNotAtAllAndIsRepaired) {
  for (size_t offset = 0; offset < text_.size(); ++offset) {
    const auto byte = static_cast<unsigned char>(text_[offset]);
    for (const int value :
         {byte ^ 0x01, byte ^ 0x10, byte ^ 0x80, 0, int{'9'}, int{'-'}, int{']'}, int{'"'}}) {
      std::string text = text_;
      text[offset] = static_cast<char>(value);
      SCOPED_TRACE("byte " + std::to_string(offset) + " is " + std::to_string(value));
      expectAllOrNothing(text);
      if (offset % kRepairEvery == 0) {
        expectRepair(text);
      }
    }
  }
}

}  // namespace
}  // namespace tevra::test
