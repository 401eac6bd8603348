#include <chrono>
#include <future>
#include <new>

#include <gtest/gtest.h>

#include "inputdb/input_table_db.h"
#include "platform/module_utils.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/sample_records.h"
#include "tests/records/wire.h"
#include "tests/support/allocation_hook.h"

namespace tevra::test {
namespace {

using Setter = bool (InputTableDB::*)(const EITMap&);
using Getter = bool (InputTableDB::*)(EITMap&);

/** One of the two EIT stores, and the other for what must not happen to it. */
struct Store {
  const char* name;
  Setter set;
  Getter get;
  Setter setOther;
  Getter getOther;
  const char* line;
  const char* perEIT;
};

std::ostream& operator<<(std::ostream& out, const Store& store) {
  return out << store.name;
}

constexpr Store kPresentFollowing = {"PresentFollowing",
                                     &InputTableDB::setInputEITpf,
                                     &InputTableDB::getInputEITpf,
                                     &InputTableDB::setInputEITsch,
                                     &InputTableDB::getInputEITsch,
                                     "Guardo EIT pf en DB local!",
                                     "setInputEITpf: "};
constexpr Store kSchedule = {"Schedule",
                             &InputTableDB::setInputEITsch,
                             &InputTableDB::getInputEITsch,
                             &InputTableDB::setInputEITpf,
                             &InputTableDB::getInputEITpf,
                             "Guardo EIT sch en DB local!",
                             "setInputEITsch: "};

constexpr size_t kLargeAllocation = size_t{1024} * 1024;

EIT eit(int32_t serviceId, int32_t tableId, int32_t version, size_t events) {
  EIT record;
  record.serviceId = serviceId;
  record.tableId = tableId;
  record.version = version;
  record.events.resize(events);
  return record;
}

/** An EIT whose copy makes one allocation of at least kLargeAllocation bytes. */
EIT largeEIT() {
  return eit(1, 0x50, 9, 50000);
}

class InputEITStore : public fake::PlatformTest, public ::testing::WithParamInterface<Store> {
 protected:
  bool set(const EITMap& eits) { return (db_.*GetParam().set)(eits); }
  bool get(EITMap& out) { return (db_.*GetParam().get)(out); }

  EITMap held() {
    EITMap out;
    const bool found = get(out);
    EXPECT_EQ(found, !out.empty());
    return out;
  }

  static fake::LogLine line(const std::string& text) { return {kLogDebug, "", text}; }

  InputTableDB db_;
};

INSTANTIATE_TEST_SUITE_P(Both, InputEITStore, ::testing::Values(kPresentFollowing, kSchedule),
                         ::testing::PrintToStringParamName());

TEST_P(InputEITStore, AnEmptyStoreEmptiesTheOutputAndIsFalse) {
  EITMap out = {{1, {{0x50, eit(1, 0x50, 1, 1)}}}};
  EXPECT_FALSE(get(out));
  EXPECT_TRUE(out.empty());
}

TEST_P(InputEITStore, TheGetterReplacesWhatTheOutputHeld) {
  const EITMap eits = {{2, {{0x51, eit(2, 0x51, 1, 1)}}}};
  set(eits);
  EITMap out = {{1, {{0x50, eit(1, 0x50, 1, 1)}}}, {2, {{0x52, eit(2, 0x52, 1, 1)}}}};
  EXPECT_TRUE(get(out));
  EXPECT_EQ(out, eits);
}

TEST_P(InputEITStore, HoldsWhatWasStored) {
  EITMap eits;
  RecordFiller filler;
  for (const int32_t serviceId : {3, 1, 2}) {
    filler.fill(eits[serviceId][0x50]);
    filler.fill(eits[serviceId][0x4E]);
  }
  EXPECT_TRUE(set(eits));
  EXPECT_EQ(held(), eits);
}

TEST_P(InputEITStore, TablesNotMentionedKeepWhatTheyHeld) {
  set({{1, {{0x50, eit(1, 0x50, 1, 1)}, {0x51, eit(1, 0x51, 1, 2)}}},
       {2, {{0x50, eit(2, 0x50, 1, 3)}}}});
  set({{1, {{0x50, eit(1, 0x50, 2, 4)}}}});
  EXPECT_EQ(held(), (EITMap{{1, {{0x50, eit(1, 0x50, 2, 4)}, {0x51, eit(1, 0x51, 1, 2)}}},
                            {2, {{0x50, eit(2, 0x50, 1, 3)}}}}));
}

TEST_P(InputEITStore, AnEITReplacesEveryMemberOfTheOneBefore) {
  set({{1, {{0x50, sample<EIT>()}}}});
  set({{1, {{0x50, EIT()}}}});
  EXPECT_EQ(held(), (EITMap{{1, {{0x50, EIT()}}}}));
}

TEST_P(InputEITStore, TheFlagsAreStoredToo) {
  set({{1, {{0x50, fromBinary<EIT>(binaryOf(sample<EIT>()))}}}});
  EXPECT_EQ(flagsOf(held()[1][0x50]), std::vector<bool>(9, true));
  set({{1, {{0x50, sample<EIT>()}}}});
  EXPECT_EQ(flagsOf(held()[1][0x50]), std::vector<bool>(9, false));
}

TEST_P(InputEITStore, TheKeysAreTheSendersAndTheLogHasTheRecords) {
  set({{7, {{0x60, eit(0x1234, 0x4E, 31, 1)}}}});
  EXPECT_EQ(held(), (EITMap{{7, {{0x60, eit(0x1234, 0x4E, 31, 1)}}}}));
  EXPECT_EQ(
      fake::logLines(),
      (std::vector<fake::LogLine>{
          line(GetParam().line),
          line(GetParam().perEIT + std::string("SID [0x1234] tid [0x4e] v[31] nevents [1]"))}));
}

TEST_P(InputEITStore, LogsEveryEITInAscendingOrderOfTheKeys) {
  set({{2, {{0x51, eit(2, 0x51, 4, 2)}, {0x50, eit(2, 0x50, 3, 1)}}},
       {1, {{0x4E, eit(0x10001, 0x14E, -1, 3)}}}});
  const std::string perEIT = GetParam().perEIT;
  EXPECT_EQ(fake::logLines(),
            (std::vector<fake::LogLine>{
                line(GetParam().line), line(perEIT + "SID [0x10001] tid [0x14e] v[-1] nevents [3]"),
                line(perEIT + "SID [0x0002] tid [0x50] v[3] nevents [1]"),
                line(perEIT + "SID [0x0002] tid [0x51] v[4] nevents [2]")}));
}

TEST_P(InputEITStore, AnEITWithoutEventsIsStoredAndLogged) {
  EXPECT_TRUE(set({{5, {{0x4E, eit(5, 0x4E, 0, 0)}}}}));
  EXPECT_EQ(held(), (EITMap{{5, {{0x4E, eit(5, 0x4E, 0, 0)}}}}));
  EXPECT_EQ(fake::logLines().back(),
            line(GetParam().perEIT + std::string("SID [0x0005] tid [0x4e] v[0] nevents [0]")));
}

TEST_P(InputEITStore, AnEmptyArgumentStoresNothing) {
  EXPECT_TRUE(set({}));
  EXPECT_TRUE(held().empty());
  EXPECT_EQ(fake::logLines(), std::vector<fake::LogLine>{line(GetParam().line)});
}

TEST_P(InputEITStore, AServiceWithoutTablesIsNotStored) {
  EXPECT_TRUE(set({{1, {}}}));
  EXPECT_TRUE(held().empty());
}

TEST_P(InputEITStore, TheStoresAreApart) {
  set({{1, {{0x50, eit(1, 0x50, 1, 1)}}}});
  EITMap other;
  EXPECT_FALSE((db_.*GetParam().getOther)(other));
}

TEST_P(InputEITStore, ClearEmptiesTheStore) {
  set({{1, {{0x50, eit(1, 0x50, 1, 1)}}}});
  db_.clear();
  EITMap out = {{9, {}}};
  EXPECT_FALSE(get(out));
  EXPECT_TRUE(out.empty());
}

TEST_P(InputEITStore, TheStoreSharesNothingWithItsCallers) {
  EITMap given = {{1, {{0x50, sample<EIT>()}}}};
  const EITMap unchanged = given;
  set(given);
  given[1][0x50].events[0].descriptors.clear();
  EITMap taken = held();
  EXPECT_EQ(taken, unchanged);
  taken[1][0x50].events.clear();
  EXPECT_EQ(held(), unchanged);
}

TEST_P(InputEITStore, AMergeThatFailsKeepsWhatItHasDoneAndFreesTheLock) {
  set({{1, {{0x50, eit(1, 0x50, 1, 2)}}}});
  const EITMap eits = {{0, {{0x50, eit(0, 0x50, 7, 1)}}},
                       {1, {{0x50, largeEIT()}}},
                       {2, {{0x50, eit(2, 0x50, 7, 1)}}}};
  fake::clearLog();
  {
    const AllocationHook failing(kLargeAllocation, [] { throw std::bad_alloc(); });
    EXPECT_THROW(set(eits), std::bad_alloc);
  }
  EXPECT_EQ(
      fake::logLines(),
      (std::vector<fake::LogLine>{
          line(GetParam().line),
          line(GetParam().perEIT + std::string("SID [0x0000] tid [0x50] v[7] nevents [1]")),
          line(GetParam().perEIT + std::string("SID [0x0001] tid [0x50] v[9] nevents [50000]"))}));
  EXPECT_EQ(held(), (EITMap{{0, {{0x50, eit(0, 0x50, 7, 1)}}}, {1, {{0x50, eit(1, 0x50, 9, 2)}}}}));
  EXPECT_TRUE(set(eits));
  EXPECT_EQ(held(), eits);
}

TEST_P(InputEITStore, AGetterThatFailsFreesTheLock) {
  set({{1, {{0x50, largeEIT()}}}});
  EITMap out;
  {
    const AllocationHook failing(kLargeAllocation, [] { throw std::bad_alloc(); });
    EXPECT_THROW((void)get(out), std::bad_alloc);
  }
  EXPECT_EQ(held()[1][0x50].events.size(), 50000U);
}

TEST_P(InputEITStore, ClearWaitsForASetter) {
  const EITMap eits = {{1, {{0x50, largeEIT()}}}};
  std::future<void> clearing;
  {
    const AllocationHook copying(kLargeAllocation, [&] {
      clearing = std::async(std::launch::async, [this] { db_.clear(); });
      EXPECT_EQ(clearing.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    });
    set(eits);
    ASSERT_TRUE(copying.triggered());
  }
  clearing.get();
  EITMap out;
  EXPECT_FALSE(get(out));
}

TEST_P(InputEITStore, ASetterHoldsItsReadersButNotTheOtherStore) {
  const EITMap eits = {{1, {{0x50, largeEIT()}}}};
  std::future<EITMap> reader;
  std::future<bool> other;
  {
    const AllocationHook copying(kLargeAllocation, [&] {
      other = std::async(std::launch::async, [this] {
        EITMap out;
        (db_.*GetParam().setOther)({{2, {{0x4E, EIT()}}}});
        return (db_.*GetParam().getOther)(out);
      });
      EXPECT_EQ(other.wait_for(std::chrono::seconds(20)), std::future_status::ready);
      reader = std::async(std::launch::async, [this] { return held(); });
      EXPECT_EQ(reader.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    });
    set(eits);
    ASSERT_TRUE(copying.triggered());
  }
  EXPECT_EQ(reader.get(), eits);
}

}  // namespace
}  // namespace tevra::test
