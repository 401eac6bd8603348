#include "records/dvbpsi_lists.h"

#include <gtest/gtest.h>

#include "platform/module_utils.h"
#include "records/dvbpsi_converters.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/tables.h"

namespace tevra::test {
namespace {

using thrift::dvb_tables::d2tPAT;
using thrift::dvb_tables::d2tPMT;
using thrift::dvb_tables::d2tSDT;
using thrift::dvb_tables::t2dCAT;
using thrift::dvb_tables::t2dPAT;
using thrift::dvb_tables::t2dPMT;
using thrift::dvb_tables::t2dSDT;

constexpr int kMost = 65536;

class DvbpsiLists : public fake::PlatformTest {};

fake::LogLine leftOut(const std::string& text) {
  return {kLogWarning, "", text};
}

/** The descriptors as a PMT brings them back from its programme loop. */
std::vector<Descriptor> throughLoop(const std::vector<Descriptor>& descriptors) {
  PMT pmt;
  pmt.descriptors = descriptors;
  return d2tPMT(t2dPMT(pmt).get()).descriptors;
}

TEST_F(DvbpsiLists, EveryByteValueSurvivesInDescriptorData) {
  std::vector<Descriptor> descriptors;
  for (int value = 0; value < 256; ++value) {
    const auto byte = static_cast<char>(value);
    descriptors.push_back(makeDescriptor(value, std::string({byte, '\0', byte})));
  }
  EXPECT_EQ(throughLoop(descriptors), descriptors);
  EXPECT_TRUE(fake::logLines().empty());
}

TEST_F(DvbpsiLists, EveryLengthUpTo255Survives) {
  std::vector<Descriptor> descriptors;
  for (size_t length = 0; length <= kMaxDescriptorPayload; ++length) {
    descriptors.push_back(makeDescriptor(0x80, std::string(length, static_cast<char>(length))));
  }
  EXPECT_EQ(throughLoop(descriptors), descriptors);
  EXPECT_TRUE(fake::logLines().empty());
}

TEST_F(DvbpsiLists, ADescriptorOver255BytesIsLeftOutWithAWarning) {
  const std::vector<Descriptor> descriptors = {
      makeDescriptor(0x4D, std::string(256, 'x')), makeDescriptor(0x48, "first"),
      makeDescriptor(0x7F, std::string(300, 'y')), makeDescriptor(0x49, std::string(255, 'z')),
      makeDescriptor(0x09, std::string(70000, 'y'))};
  EXPECT_EQ(throughLoop(descriptors), (std::vector<Descriptor>{descriptors[1], descriptors[3]}));
  EXPECT_EQ(fake::logLines(),
            (std::vector<fake::LogLine>{leftOut("Descriptor [0x4d] of [256] bytes left out"),
                                        leftOut("Descriptor [0x7f] of [300] bytes left out"),
                                        leftOut("Descriptor [0x09] of [70000] bytes left out")}));
}

TEST_F(DvbpsiLists, LongDescriptorsAreLeftOutOfEveryLoop) {
  const std::vector<Descriptor> descriptors = {makeDescriptor(1, std::string(256, 'x')),
                                               makeDescriptor(2, "kept")};
  CAT cat;
  cat.descriptors = descriptors;
  EXPECT_EQ(descriptorsFromDvbpsi(t2dCAT(cat)->p_first_descriptor), std::vector{descriptors[1]});
  PMT pmt;
  pmt.esList.resize(2);
  pmt.esList[1].descriptors = descriptors;
  EXPECT_EQ(d2tPMT(t2dPMT(pmt).get()).esList[1].descriptors, std::vector{descriptors[1]});
  SDT sdt;
  sdt.services.resize(2);
  sdt.services[1].descriptors = descriptors;
  EXPECT_EQ(d2tSDT(t2dSDT(sdt).get()).services[1].descriptors, std::vector{descriptors[1]});
  EXPECT_EQ(fake::timesLogged(kLogWarning, "Descriptor [0x01] of [256] bytes left out"), 3);
}

TEST_F(DvbpsiLists, ALoopOfNothingButLongDescriptorsIsEmpty) {
  PMT pmt;
  pmt.descriptors = {makeDescriptor(1, std::string(256, 'x')),
                     makeDescriptor(2, std::string(256, 'x'))};
  EXPECT_EQ(t2dPMT(pmt)->p_first_descriptor, nullptr);
}

TEST_F(DvbpsiLists, TheRecordKeepsADescriptorThatTheTableLeavesOut) {
  PMT pmt;
  pmt.descriptors = {makeDescriptor(1, std::string(256, 'x'))};
  const PMT before = pmt;
  EXPECT_TRUE(d2tPMT(t2dPMT(pmt).get()).descriptors.empty());
  EXPECT_EQ(pmt, before);
}

TEST_F(DvbpsiLists, AProgrammeOnPidZeroIsInTheRecordAndNotInTheTable) {
  const PAT pat = makePat(1, {{1, 0}, {2, 32}, {3, 0}, {4, 33}, {5, 0}});
  EXPECT_EQ(d2tPAT(t2dPAT(pat).get()), makePat(1, {{2, 32}, {4, 33}}));
}

TEST_F(DvbpsiLists, AProgrammeOnPidZeroIsNotInTheSection) {
  const PAT pat = makePat(1, {{1, 0}, {2, 32}});
  const DvbpsiHandle handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE));
  const PatPtr table = t2dPAT(pat);
  const SectionsPtr sections(dvbpsi_pat_sections_generate(handle.get(), table.get(), 100));
  ASSERT_NE(sections, nullptr);
  const std::string payload(reinterpret_cast<const char*>(sections->p_payload_start),
                            reinterpret_cast<const char*>(sections->p_payload_end));
  EXPECT_EQ(payload, std::string("\x00\x02\xE0\x20", 4));
}

TEST_F(DvbpsiLists, APatOfPidZeroAloneIsEmpty) {
  EXPECT_EQ(t2dPAT(makePat(1, {{1, 0}}))->p_first_program, nullptr);
}

TEST_F(DvbpsiLists, ProgrammesKeepTheirOrderAndTheirDuplicates) {
  const PAT pat = makePat(1, {{7, 70}, {1, 10}, {7, 71}, {7, 70}});
  EXPECT_EQ(d2tPAT(t2dPAT(pat).get()), pat);
}

TEST_F(DvbpsiLists, TheLargestPatComesBackWhole) {
  PAT pat;
  for (int number = 0; number < kMost; ++number) {
    PATProgram& program = pat.programs.emplace_back();
    program.programNumber = number;
    program.pid = number % 0x1FFF + 1;
  }
  EXPECT_EQ(d2tPAT(t2dPAT(pat).get()), pat);
}

TEST_F(DvbpsiLists, TheLargestSdtComesBackWhole) {
  SDT sdt;
  sdt.services.resize(kMost);
  for (int id = 0; id < kMost; ++id) {
    SDTService& service = sdt.services[static_cast<size_t>(id)];
    service.serviceId = kMost - 1 - id;
    service.eitSchedule = id % 2 == 0;
    service.runningStatus = id % 8;
  }
  sdt.services.back().descriptors = {makeDescriptor(0x48, "last")};
  EXPECT_EQ(d2tSDT(t2dSDT(sdt).get()), sdt);
}

TEST_F(DvbpsiLists, TheLargestLoopsOfAPmtComeBackWhole) {
  PMT pmt;
  for (int entry = 0; entry < kMost; ++entry) {
    pmt.descriptors.push_back(makeDescriptor(entry & 0xFF, std::to_string(entry)));
    PMTES& stream = pmt.esList.emplace_back();
    stream.streamType = entry & 0xFF;
    stream.pid = entry;
  }
  pmt.esList.front().descriptors = {makeDescriptor(1, "first")};
  pmt.esList.back().descriptors = {makeDescriptor(2, "last")};
  EXPECT_EQ(d2tPMT(t2dPMT(pmt).get()), pmt);
}

TEST_F(DvbpsiLists, ANullLoopHasNoDescriptors) {
  EXPECT_TRUE(descriptorsFromDvbpsi(nullptr).empty());
}

TEST_F(DvbpsiLists, AppendingReturnsTheNodeThatIsLastInTheTable) {
  const PmtPtr table(dvbpsi_pmt_new(1, 0, true, 2));
  StreamAppender streams(*table);
  dvbpsi_pmt_es_t& first = streams.add(3, 4);
  dvbpsi_pmt_es_t& second = streams.add(5, 6);
  EXPECT_EQ(table->p_first_es, &first);
  EXPECT_EQ(first.p_next, &second);
  EXPECT_EQ(second.p_next, nullptr);
}

}  // namespace
}  // namespace tevra::test
