#include "records/dvbpsi_converters.h"

#include <gtest/gtest.h>

#include "platform/module_utils.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/sample_records.h"
#include "tests/support/tables.h"

// Single tables, member for member; dvbpsi_lists_test.cpp has what concerns their lists.

namespace tevra::test {
namespace {

using thrift::dvb_tables::d2tPAT;
using thrift::dvb_tables::d2tPMT;
using thrift::dvb_tables::d2tSDT;
using thrift::dvb_tables::t2dCAT;
using thrift::dvb_tables::t2dPAT;
using thrift::dvb_tables::t2dPMT;
using thrift::dvb_tables::t2dSDT;

class DvbpsiConverters : public fake::PlatformTest {};

/** A PMT with two streams and, in each of its three loops, as many descriptors as its place. */
PMT samplePMT() {
  PMT pmt =
      makePmt(3401, 0x1FFE,
              {makeStream(0x1B, 512, {makeDescriptor(0x52, "\x01"), makeDescriptor(0x28, "")}),
               makeStream(0x04, 513,
                          {makeDescriptor(0x0A, "eng\x01"), makeDescriptor(0x0A, "ita"),
                           makeDescriptor(0x52, "\x02")})});
  pmt.version = 31;
  pmt.currentNext = true;
  pmt.descriptors = {makeCaDescriptor(0x0B00, 0x123)};
  return pmt;
}

SDT sampleSDT() {
  SDT sdt = makeSdt({makeService(0xFFFF),
                     makeService(2, {makeDescriptor(0x48, std::string("\x01\x00\x03One", 6)),
                                     makeDescriptor(0x5F, std::string(4, '\0'))}),
                     makeService(1)});
  sdt.tableId = 0x46;
  sdt.transportStreamId = 905;
  sdt.version = 17;
  sdt.originalNetworkId = 0x2000;
  sdt.services[0].eitSchedule = true;
  sdt.services[0].runningStatus = 4;
  sdt.services[1].eitPresentFollowing = true;
  sdt.services[1].runningStatus = 7;
  sdt.services[2].freeCA = true;
  return sdt;
}

TEST_F(DvbpsiConverters, PATFromDvbpsi) {
  const PatPtr table(dvbpsi_pat_new(0x1234, 5, true));
  dvbpsi_pat_program_add(table.get(), 0, 16);
  dvbpsi_pat_program_add(table.get(), 0xFFFF, 0x1FFF);
  dvbpsi_pat_program_add(table.get(), 1, 0xFFFF);
  PAT expected = makePat(0x1234, {{0, 16}, {0xFFFF, 0x1FFF}, {1, 0xFFFF}});
  expected.version = 5;
  expected.currentNext = true;
  EXPECT_EQ(d2tPAT(table.get()), expected);
}

TEST_F(DvbpsiConverters, PMTFromDvbpsi) {
  const PmtPtr table(dvbpsi_pmt_new(3401, 31, true, 0x1FFE));
  uint8_t caData[] = {0x0B, 0x00, 0xE1, 0x23};
  dvbpsi_pmt_descriptor_add(table.get(), 0x09, 4, caData);
  dvbpsi_pmt_es_t* stream = dvbpsi_pmt_es_add(table.get(), 0x1B, 512);
  uint8_t language[] = {'e', 'n', 'g', 0};
  dvbpsi_pmt_es_descriptor_add(stream, 0x0A, 4, language);
  dvbpsi_pmt_es_add(table.get(), 0x04, 513);
  PMT expected = makePmt(3401, 0x1FFE,
                         {makeStream(0x1B, 512, {makeDescriptor(0x0A, std::string("eng\0", 4))}),
                          makeStream(0x04, 513)});
  expected.version = 31;
  expected.currentNext = true;
  expected.descriptors = {makeDescriptor(0x09, std::string("\x0B\x00\xE1\x23", 4))};
  EXPECT_EQ(d2tPMT(table.get()), expected);
}

TEST_F(DvbpsiConverters, SDTFromDvbpsi) {
  const SdtPtr table(dvbpsi_sdt_new(0x46, 905, 17, true, 0x2000));
  dvbpsi_sdt_service_t* first = dvbpsi_sdt_service_add(table.get(), 7, true, false, 4, false);
  uint8_t data[] = {1, 0, 0};
  dvbpsi_sdt_service_descriptor_add(first, 0x48, 3, data);
  dvbpsi_sdt_service_add(table.get(), 6, false, true, 1, true);
  SDT expected =
      makeSdt({makeService(7, {makeDescriptor(0x48, std::string("\x01\0\0", 3))}), makeService(6)});
  expected.tableId = 0x46;
  expected.transportStreamId = 905;
  expected.version = 17;
  expected.originalNetworkId = 0x2000;
  expected.services[0].eitSchedule = true;
  expected.services[0].runningStatus = 4;
  expected.services[1].eitPresentFollowing = true;
  expected.services[1].runningStatus = 1;
  expected.services[1].freeCA = true;
  EXPECT_EQ(d2tSDT(table.get()), expected);
}

TEST_F(DvbpsiConverters, ANotCurrentTableIsNotCurrentInTheRecord) {
  EXPECT_FALSE(d2tPAT(PatPtr(dvbpsi_pat_new(1, 1, false)).get()).currentNext);
  EXPECT_FALSE(d2tPMT(PmtPtr(dvbpsi_pmt_new(1, 1, false, 1)).get()).currentNext);
  EXPECT_FALSE(d2tSDT(SdtPtr(dvbpsi_sdt_new(0x42, 1, 1, false, 1)).get()).currentNext);
}

TEST_F(DvbpsiConverters, ANullTableGivesADefaultRecord) {
  EXPECT_EQ(d2tPAT(nullptr), PAT());
  EXPECT_EQ(d2tPMT(nullptr), PMT());
  EXPECT_EQ(d2tSDT(nullptr), SDT());
}

TEST_F(DvbpsiConverters, TheFlagsOfConvertedRecordsStayFalse) {
  const PMT pmt = d2tPMT(t2dPMT(samplePMT()).get());
  EXPECT_EQ(flagsOf(pmt), std::vector<bool>(6, false));
  EXPECT_EQ(flagsOf(pmt.esList[0]), std::vector<bool>(3, false));
  EXPECT_EQ(flagsOf(pmt.esList[0].descriptors[0]), std::vector<bool>(2, false));
  PAT oneProgramme;
  oneProgramme.programs.resize(1);
  oneProgramme.programs[0].pid = 32;
  const PAT pat = d2tPAT(t2dPAT(oneProgramme).get());
  EXPECT_EQ(flagsOf(pat), std::vector<bool>(4, false));
  EXPECT_EQ(flagsOf(pat.programs.at(0)), std::vector<bool>(2, false));
  const SDT sdt = d2tSDT(t2dSDT(sampleSDT()).get());
  EXPECT_EQ(flagsOf(sdt), std::vector<bool>(6, false));
  EXPECT_EQ(flagsOf(sdt.services.at(1)), std::vector<bool>(6, false));
  EXPECT_EQ(flagsOf(sdt.services.at(1).descriptors.at(0)), std::vector<bool>(2, false));
}

TEST_F(DvbpsiConverters, PATToDvbpsi) {
  PAT pat;
  pat.transportStreamId = 0xFFFE;
  pat.version = 31;
  pat.currentNext = true;
  pat.programs.resize(2);
  pat.programs[0].programNumber = 9;
  pat.programs[0].pid = 0x1FFF;
  pat.programs[1].pid = 16;
  const PatPtr table = t2dPAT(pat);
  EXPECT_EQ(table->i_ts_id, 0xFFFE);
  EXPECT_EQ(table->i_version, 31);
  EXPECT_TRUE(table->b_current_next);
  ASSERT_NE(table->p_first_program, nullptr);
  EXPECT_EQ(table->p_first_program->i_number, 9);
  EXPECT_EQ(table->p_first_program->i_pid, 0x1FFF);
  ASSERT_NE(table->p_first_program->p_next, nullptr);
  EXPECT_EQ(table->p_first_program->p_next->i_number, 0);
  EXPECT_EQ(table->p_first_program->p_next->i_pid, 16);
  EXPECT_EQ(table->p_first_program->p_next->p_next, nullptr);
}

TEST_F(DvbpsiConverters, CATToDvbpsi) {
  CAT cat;
  cat.version = 3;
  cat.currentNext = true;
  cat.descriptors = {makeDescriptor(0x09, std::string("\x01\x00\xE0\x50\x00", 5)),
                     makeDescriptor(0x09, "")};
  const CatPtr table = t2dCAT(cat);
  EXPECT_EQ(table->i_version, 3);
  EXPECT_TRUE(table->b_current_next);
  const dvbpsi_descriptor_t* first = table->p_first_descriptor;
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->i_tag, 0x09);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(first->p_data), first->i_length),
            std::string("\x01\x00\xE0\x50\x00", 5));
  ASSERT_NE(first->p_next, nullptr);
  EXPECT_EQ(first->p_next->i_length, 0);
  EXPECT_EQ(first->p_next->p_next, nullptr);
}

TEST_F(DvbpsiConverters, PMTToDvbpsi) {
  const PmtPtr table = t2dPMT(samplePMT());
  EXPECT_EQ(table->i_program_number, 3401);
  EXPECT_EQ(table->i_version, 31);
  EXPECT_TRUE(table->b_current_next);
  EXPECT_EQ(table->i_pcr_pid, 0x1FFE);
  ASSERT_NE(table->p_first_descriptor, nullptr);
  EXPECT_EQ(table->p_first_descriptor->i_tag, 0x09);
  const dvbpsi_pmt_es_t* stream = table->p_first_es;
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(stream->i_type, 0x1B);
  EXPECT_EQ(stream->i_pid, 512);
  EXPECT_EQ(stream->p_first_descriptor->i_tag, 0x52);
  EXPECT_EQ(stream->p_first_descriptor->p_next->i_tag, 0x28);
  ASSERT_NE(stream->p_next, nullptr);
  EXPECT_EQ(stream->p_next->i_type, 0x04);
  EXPECT_EQ(stream->p_next->i_pid, 513);
  EXPECT_EQ(stream->p_next->p_next, nullptr);
}

TEST_F(DvbpsiConverters, SDTToDvbpsi) {
  const SdtPtr table = t2dSDT(sampleSDT());
  EXPECT_EQ(table->i_table_id, 0x46);
  EXPECT_EQ(table->i_extension, 905);
  EXPECT_EQ(table->i_version, 17);
  EXPECT_TRUE(table->b_current_next);
  EXPECT_EQ(table->i_network_id, 0x2000);
  const dvbpsi_sdt_service_t* first = table->p_first_service;
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->i_service_id, 0xFFFF);
  EXPECT_TRUE(first->b_eit_schedule && !first->b_eit_present && !first->b_free_ca);
  EXPECT_EQ(first->i_running_status, 4);
  const dvbpsi_sdt_service_t* second = first->p_next;
  ASSERT_NE(second, nullptr);
  EXPECT_TRUE(!second->b_eit_schedule && second->b_eit_present && !second->b_free_ca);
  EXPECT_EQ(second->i_running_status, 7);
  ASSERT_NE(second->p_next, nullptr);
  EXPECT_TRUE(second->p_next->b_free_ca);
  EXPECT_EQ(second->p_next->p_next, nullptr);
}

TEST_F(DvbpsiConverters, DefaultRecordsGiveEmptyTables) {
  const PatPtr pat = t2dPAT(PAT());
  EXPECT_EQ(pat->p_first_program, nullptr);
  EXPECT_FALSE(pat->b_current_next);
  const PmtPtr pmt = t2dPMT(PMT());
  EXPECT_EQ(pmt->p_first_descriptor, nullptr);
  EXPECT_EQ(pmt->p_first_es, nullptr);
  EXPECT_FALSE(pmt->b_current_next);
  const SdtPtr sdt = t2dSDT(SDT());
  EXPECT_EQ(sdt->p_first_service, nullptr);
  EXPECT_FALSE(sdt->b_current_next);
  const CatPtr cat = t2dCAT(CAT());
  EXPECT_EQ(cat->p_first_descriptor, nullptr);
  EXPECT_FALSE(cat->b_current_next);
}

TEST_F(DvbpsiConverters, TablesThatFitComeBackAsTheyWere) {
  const PMT pmt = samplePMT();
  EXPECT_EQ(d2tPMT(t2dPMT(pmt).get()), pmt);
  const SDT sdt = sampleSDT();
  EXPECT_EQ(d2tSDT(t2dSDT(sdt).get()), sdt);
  const PAT pat = sample<PAT>();
  EXPECT_EQ(d2tPAT(t2dPAT(pat).get()), pat);
  EXPECT_TRUE(fake::logLines().empty());
}

TEST_F(DvbpsiConverters, WiderValuesAreNarrowedToTheMembersOfTheTable) {
  PMT pmt;
  pmt.programNumber = 0x12345;
  pmt.version = 0x121;
  pmt.pcrPid = -1;
  pmt.descriptors = {makeDescriptor(0x148, "x")};
  pmt.esList.resize(1);
  pmt.esList[0].streamType = -1;
  pmt.esList[0].pid = 0x7FFF0123;
  const PMT narrowed = d2tPMT(t2dPMT(pmt).get());
  EXPECT_EQ(narrowed.programNumber, 0x2345);
  EXPECT_EQ(narrowed.version, 0x21);
  EXPECT_EQ(narrowed.pcrPid, 0xFFFF);
  EXPECT_EQ(narrowed.descriptors[0].tag, 0x48);
  EXPECT_EQ(narrowed.esList[0].streamType, 0xFF);
  EXPECT_EQ(narrowed.esList[0].pid, 0x0123);
}

TEST_F(DvbpsiConverters, NarrowPmtIsTheWayThroughLibdvbpsi) {
  PMT wide;
  wide.programNumber = 0x12345;
  wide.version = 0x123;
  wide.currentNext = true;
  wide.pcrPid = -1;
  wide.descriptors = {makeDescriptor(0x109, "programme"),
                      makeDescriptor(0x0A, std::string(256, 'x'))};
  PMTES& stream = wide.esList.emplace_back();
  stream.streamType = 0x11B;
  stream.pid = 0x1FFFF;
  stream.descriptors = {makeDescriptor(0x52, std::string(255, '\0')), makeDescriptor(-1, "")};
  wide.esList.emplace_back();
  wide.__isset.version = true;
  wide.esList[0].__isset.pid = true;
  const PMT narrow = narrowPMT(wide);
  EXPECT_EQ(narrow, d2tPMT(t2dPMT(wide).get()));
  EXPECT_EQ(narrow.programNumber, 0x2345);
  EXPECT_EQ(narrow.esList.at(0).streamType, 0x1B);
  EXPECT_EQ(narrow.descriptors.size(), 1U);
  EXPECT_FALSE(narrow.__isset.version);
  EXPECT_FALSE(narrow.esList[0].__isset.pid);
}

TEST_F(DvbpsiConverters, NarrowPmtWarnsOfWhatItLeavesOut) {
  PMT pmt;
  pmt.descriptors = {makeDescriptor(0x4D, std::string(300, 'x'))};
  (void)narrowPMT(pmt);
  EXPECT_EQ(fake::logLines(),
            (std::vector<fake::LogLine>{{4, "", "Descriptor [0x4d] of [300] bytes left out"}}));
}

}  // namespace
}  // namespace tevra::test
