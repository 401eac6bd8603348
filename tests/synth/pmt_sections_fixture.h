#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/module_utils.h"
#include "synth/packetizer.h"
#include "synth/pmt_sections.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/transport_packets.h"

namespace tevra::test {

/** What a section holds besides its header, PCR_PID, program_info_length and CRC_32. */
inline constexpr size_t kMostBytes = 1008;

/** Generates sections and reads them again. */
class PmtSections : public fake::PlatformTest {
 protected:
  /** Programme 1201, version 11, PCR on 0x66, without descriptors and streams. */
  static PMT somePmt() {
    PMT pmt = makePmt(1201, 0x66);
    pmt.version = 11;
    pmt.currentNext = true;
    return pmt;
  }

  static fake::LogLine needs(int sections) {
    return {4, "",
            "[synthPMT] PMT of service [1201] needs [" + std::to_string(sections) + "] sections."};
  }

  /** The packets that carry `pmt`; of the log the lines of its sections alone remain. */
  static Packets packetsOf(const PMT& pmt) {
    const DvbpsiHandle handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE));
    fake::clearLog();
    bool told = false;
    const SectionsPtr sections = generatePmtSections(*handle, pmt, told);
    const std::vector<fake::LogLine> lines = fake::logLines();
    EXPECT_EQ(told, !lines.empty());
    Packets packets;
    packetizeSections(packets, makePacketTemplate(kPmtPid), sections.get());
    fake::clearLog();
    for (const fake::LogLine& line : lines) {
      log_function(line.level, line.tag.c_str(), "%s", line.text.c_str());
    }
    return packets;
  }

  static std::vector<std::string> bytes(const PMT& pmt) {
    return sectionsOf(packetsOf(pmt), kPmtPid);
  }

  static std::vector<size_t> sizes(const PMT& pmt) {
    std::vector<size_t> result;
    for (const std::string& section : bytes(pmt)) {
      result.push_back(section.size());
    }
    return result;
  }

  /** libdvbpsi makes the same PMT of the packets. */
  static void expectRoundTrip(const PMT& pmt) { EXPECT_EQ(decodePmt(packetsOf(pmt), 1201), pmt); }
};

}  // namespace tevra::test
