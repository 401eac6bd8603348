#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

#include "records/dvbpsi.h"
#include "tests/synth/saved_table_stores.h"
#include "tests/synth/synthesis_fixture.h"

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

  ServiceTables service_ = makeServiceTables();
  ServiceWorkRecord work_ = makeWorkRecord(service_);
};

bool operator==(const ServiceWorkRecord& a, const ServiceWorkRecord& b) {
  return a.pmt == b.pmt && a.outputTables == b.outputTables;
}

template <class Table>
class NoHandleFor : public NoHandle {};

using Tables = testing::Types<PAT, SDT, PMT>;
TYPED_TEST_SUITE(NoHandleFor, Tables, );  // the comma: a variadic macro wants an argument

TYPED_TEST(NoHandleFor, ATableFailsAndChangesNothing) {
  TableStore before;
  (before.*Synthesis<TypeParam>::kStored).version = 5;
  StoredTables stored(before);
  EXPECT_EQ(Synthesis<TypeParam>::kRun(this->work_, stored),
            (std::is_same_v<TypeParam, PAT> ? -1 : 1));
  EXPECT_EQ(*stored, before);
  EXPECT_TRUE(this->work_ == makeWorkRecord(this->service_));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TYPED_TEST(NoHandleFor, ATableFailsThoughItsPacketsAreKept) {
  StoredTables stored;
  ServiceWorkRecord first = makeWorkRecord(this->service_);
  refuseHandles = false;
  ASSERT_EQ(Synthesis<TypeParam>::kRun(first, stored), 0);
  refuseHandles = true;
  EXPECT_NE(Synthesis<TypeParam>::kRun(this->work_, stored), 0);
  EXPECT_TRUE(this->work_ == makeWorkRecord(this->service_));
}

TEST_F(NoHandle, AllFailuresAreIgnoredAndTheFileIsWritten) {
  SavedTableStores stores;
  saveSynthesisedTables(stores, work_);
  EXPECT_EQ(handlesAsked, 3);
  EXPECT_TRUE(work_ == makeWorkRecord(service_));
  EXPECT_EQ(*stores.tableStore(kInputProgram), TableStore());
  EXPECT_EQ(stores.saves(), 1);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "[MPTS2] has to save the new tables in a file"}));
}

TEST_F(NoHandle, WithHandlesAgainTheTablesAreMadeWithOneSilentHandleEach) {
  SavedTableStores stores;
  saveSynthesisedTables(stores, work_);
  refuseHandles = false;
  handlesAsked = 0;
  saveSynthesisedTables(stores, work_);
  EXPECT_EQ(handlesAsked, 3);
  EXPECT_TRUE(silentOnly);
  EXPECT_EQ(work_.outputTables.dvbTables.pat.version, 1);
  EXPECT_EQ(work_.outputTables.dvbTables.sdt.version, 1);
  EXPECT_EQ(work_.outputTables.dvbTables.pmt.version, 1);
}

}  // namespace
}  // namespace tevra::test
