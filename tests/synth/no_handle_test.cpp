#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "records/dvbpsi.h"
#include "synth/psi_synthesis.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/fake_table_stores.h"

namespace {

bool refuseHandles = false;
int handlesAsked = 0;
bool silentOnly = true;  // every handle was to stay without messages

}  // namespace

// The linker sends the program's calls of dvbpsi_new here.
extern "C" {
dvbpsi_t* __real_dvbpsi_new(dvbpsi_message_cb callback, enum dvbpsi_msg_level level);
dvbpsi_t* __wrap_dvbpsi_new(dvbpsi_message_cb callback, enum dvbpsi_msg_level level) {
  ++handlesAsked;
  silentOnly = silentOnly && callback == nullptr && level == DVBPSI_MSG_NONE;
  return refuseHandles ? nullptr : __real_dvbpsi_new(callback, level);
}
}

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class NoHandle : public fake::PlatformTest {
 protected:
  NoHandle() {
    refuseHandles = true;
    handlesAsked = 0;
    silentOnly = true;
  }
  ~NoHandle() override { refuseHandles = false; }

  ServiceWorkRecord work_ = makeWorkRecord();
};

bool operator==(const ServiceWorkRecord& a, const ServiceWorkRecord& b) {
  return a.pat == b.pat && a.sdt == b.sdt && a.pmt == b.pmt && a.outputTables == b.outputTables;
}

TEST_F(NoHandle, ThePatFailsWithMinusOneAndChangesNothing) {
  PAT stored = makePat(1, {{2, 3}});
  EXPECT_EQ(synthPAT(work_, stored), -1);
  EXPECT_EQ(stored, makePat(1, {{2, 3}}));
  EXPECT_TRUE(work_ == makeWorkRecord());
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(NoHandle, TheSdtFailsWithOneAndChangesNothing) {
  SDT stored = makeSdt({makeService(5)});
  EXPECT_EQ(synthSDT(work_, stored), 1);
  EXPECT_EQ(stored, makeSdt({makeService(5)}));
  EXPECT_TRUE(work_ == makeWorkRecord());
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(NoHandle, ThePmtFailsWithOneAndChangesNothing) {
  PMT stored = makePmt(6, 7);
  EXPECT_EQ(synthPMT(work_, stored), 1);
  EXPECT_EQ(stored, makePmt(6, 7));
  EXPECT_TRUE(work_ == makeWorkRecord());
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(NoHandle, AllFailuresAreIgnoredAndTheFileIsWritten) {
  FakeTableStores owner;
  saveSynthesisedTables(owner, work_);
  EXPECT_EQ(handlesAsked, 3);
  EXPECT_TRUE(work_ == makeWorkRecord());
  EXPECT_EQ(owner.stores.at(kInputProgram), TableStore());
  EXPECT_THAT(owner.written, SizeIs(1));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "[MPTS2] has to save the new tables in a file"}));
}

TEST_F(NoHandle, WithHandlesAgainTheTablesAreMadeWithOneSilentHandleEach) {
  FakeTableStores owner;
  saveSynthesisedTables(owner, work_);
  refuseHandles = false;
  handlesAsked = 0;
  saveSynthesisedTables(owner, work_);
  EXPECT_EQ(handlesAsked, 3);
  EXPECT_TRUE(silentOnly);
  EXPECT_EQ(work_.outputTables.dvbTables.pat.version, 1);
  EXPECT_EQ(work_.outputTables.dvbTables.sdt.version, 1);
  EXPECT_EQ(work_.outputTables.dvbTables.pmt.version, 1);
}

}  // namespace
}  // namespace tevra::test
