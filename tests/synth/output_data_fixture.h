#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "cfdb/conflict_free_db.h"
#include "synth/output_data.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/pid_list_matchers.h"
#include "tests/synth/saved_table_stores.h"
#include "tests/synth/transport_packets.h"

namespace tevra::test {

// PIDs of programme 3401 on the input.
inline constexpr int32_t kPmtIn = 0x400;
inline constexpr int32_t kVideoIn = 0x100;  // with the PCR
inline constexpr int32_t kSpanishIn = 0x101;
inline constexpr int32_t kEnglishIn = 0x102;
inline constexpr int32_t kProgramEcmIn = 0x200;
inline constexpr int32_t kVideoEcmIn = 0x201;
inline constexpr int32_t kEmmIn = 0x300;

inline const fake::LogLine kNoSettings{3, "", "Output SPTS has no LastNodeSettings"};

/** Requests against a database that holds programme 3401, scrambled, with two audio languages. */
class OutputDataTest : public fake::PlatformTest {
 protected:
  OutputDataTest() {
    storePat({{kInputProgram, kPmtIn}, {3402, 0x410}});
    database_.setConflictFreeSDT(
        makeSdt({makeService(kInputProgram, {makeServiceDescriptor(0x19)})}));
    storePmt();
    request_.inputSID = kInputProgram;
    fake::clearLog();
    clearSyncCalls();
  }

  void storePat(std::initializer_list<std::pair<int32_t, int32_t>> programs) {
    PAT pat = makePat(1001, programs);
    pat.currentNext = true;
    PAT ignored;
    database_.setConflictFreePAT(ignored, pat);
  }

  void storePmt() {
    PMT pmt = makePmt(kInputProgram, kVideoIn,
                      {makeStream(0x1B, kVideoIn, {makeCaDescriptor(0x0500, kVideoEcmIn)}),
                       makeStream(4, kSpanishIn, {makeLanguageDescriptor({"spa"})}),
                       makeStream(4, kEnglishIn, {makeLanguageDescriptor({"eng"})})});
    pmt.currentNext = true;
    pmt.descriptors = {makeCaDescriptor(0x0500, kProgramEcmIn)};
    PMT ignored;
    database_.setConflictFreePMT(ignored, pmt);
  }

  void storeCat(std::initializer_list<uint16_t> emmPids) {
    CAT cat;
    for (const uint16_t pid : emmPids) {
      cat.descriptors.push_back(makeCaDescriptor(0x0500, pid));
    }
    CAT ignored;
    database_.setConflictFreeCAT(ignored, cat);
    fake::clearLog();
  }

  /** Describes output service 1201 "Uno HD" of transport stream 7 in network 8. */
  static OutputServiceDescription describe(int32_t globalSID, int32_t nextNode = 0) {
    OutputServiceDescription output;
    output.globalSID = globalSID;
    output.nextNode = nextNode;
    output.outputSID = 1201;
    output.serviceName = "Uno HD";
    output.transportStreamId = 7;
    output.originalNetworkId = 8;
    output.outputParam = 99;
    return output;
  }

  /** Asks, with a clean log, and keeps the answer. */
  void ask() {
    fake::clearLog();
    data_.getSrvOutputData(answer_, request_);
  }

  [[nodiscard]] int32_t outputPid(int32_t inputPid) {
    return database_.getConflictFreePID(inputPid);
  }

  /** An item as a remapped answer carries it. */
  [[nodiscard]] auto remapped(int32_t inputPid, int32_t attributes) {
    return pidItem(inputPid, outputPid(inputPid), attributes);
  }

  /** An item as an answer without remapping carries it. */
  [[nodiscard]] auto unmapped(int32_t inputPid, int32_t attributes) {
    return pidItem(outputPid(inputPid), outputPid(inputPid), attributes);
  }

  TimeOffset timeOffset_;
  EITVersions eitVersions_{0};
  SavedTableStores stores_;
  ConflictFreeDB database_{0, timeOffset_, eitVersions_};
  OutputData data_{database_, stores_};
  SrvOutputRequest request_;
  OutputConfigurations answer_;
};

/** The texts of all lines so far, in order, with level and tag checked to be 7 and none. */
inline std::vector<std::string> debugTexts() {
  std::vector<std::string> texts;
  for (const fake::LogLine& line : fake::logLines()) {
    EXPECT_EQ(line.level, 7) << line;
    EXPECT_EQ(line.tag, "") << line;
    texts.push_back(line.text);
  }
  return texts;
}

}  // namespace tevra::test
