#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <ostream>

#include "cfdb/conflict_free_db.h"
#include "tests/cfdb/conflict_free_db_fixture.h"
#include "tests/support/allocation_hook.h"
#include "tests/support/sync_recorder.h"
#include "tests/support/tables.h"

// Which operation waits for which other.

namespace tevra::test {
namespace {

// Which locks a clear waits for

/** A setter, the first allocation of which, for its log line, is inside its lock. */
struct Setter {
  const char* name;
  void (*set)(ConflictFreeDB& database);
  bool clearWaits;
};

std::ostream& operator<<(std::ostream& out, const Setter& setter) {
  return out << setter.name;
}

template <auto set, class Table>
void setEmpty(ConflictFreeDB& database) {
  Table out;
  EXPECT_TRUE((database.*set)(out, Table()));
}

template <auto restamp>
void restampNothing(ConflictFreeDB& database) {
  (database.*restamp)({});
}

class EverySetter : public ConflictFreeDBFixture, public testing::WithParamInterface<Setter> {};

TEST_P(EverySetter, HoldsAClearUpUnlessItIsTheTots) {
  std::future<void> clearing;
  {
    const AllocationHook setting(1, [&] {
      clearing = std::async(std::launch::async, [this] { database_.clearConflictFreeDB(); });
      const auto patience = std::chrono::milliseconds(GetParam().clearWaits ? 50 : 20'000);
      EXPECT_EQ(clearing.wait_for(patience) == std::future_status::timeout, GetParam().clearWaits);
    });
    GetParam().set(database_);
    ASSERT_TRUE(setting.triggered());
  }
  clearing.get();
}

INSTANTIATE_TEST_SUITE_P(
    ConflictFreeDB, EverySetter,
    testing::Values(
        Setter{"PAT", setEmpty<&ConflictFreeDB::setConflictFreePAT, PAT>, true},
        Setter{"SDT", [](ConflictFreeDB& database) { database.setConflictFreeSDT(SDT()); }, true},
        Setter{"PMT", setEmpty<&ConflictFreeDB::setConflictFreePMT, PMT>, true},
        Setter{"CAT", setEmpty<&ConflictFreeDB::setConflictFreeCAT, CAT>, true},
        Setter{"TOT", setEmpty<&ConflictFreeDB::setConflictFreeTOT, TOT>, false},
        Setter{"NIT", setEmpty<&ConflictFreeDB::setConflictFreeNIT, NIT>, true},
        Setter{"BAT", setEmpty<&ConflictFreeDB::setConflictFreeBAT, BAT>, true},
        Setter{"EITpf", restampNothing<&ConflictFreeDB::restampEITpf>, true},
        Setter{"EITsch", restampNothing<&ConflictFreeDB::restampEITsch>, true}),
    testing::PrintToStringParamName());

// The PAT's lock around the saving of the mapping

class WhileSaving : public ConflictFreeDBFixture {};

TEST_F(WhileSaving, ThePatCannotBeRead) {
  std::future<bool> reader;
  onSyncfs([&] {
    reader = std::async(std::launch::async, [this] {
      PAT out;
      return database_.getConflictFreePAT(out);
    });
    EXPECT_EQ(reader.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  });
  PAT out;
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{1, 0x100}})));
  onSyncfs({});
  ASSERT_TRUE(reader.valid());
  EXPECT_TRUE(reader.get());
}

// Which locks are held during a pass

/** Whether an action on another thread ends while this one is inside a pass. */
class WhileRestamping : public ConflictFreeDBFixture {
 protected:
  bool endsDuringPresentFollowing(const std::function<void()>& action) {
    return endsDuring(&ConflictFreeDB::restampEITpf, action);
  }

  bool endsDuringSchedule(const std::function<void()>& action) {
    return endsDuring(&ConflictFreeDB::restampEITsch, action);
  }

  void expectToEndMeanwhile() { patience_ = std::chrono::seconds(20); }
  void expectToWait() { patience_ = std::chrono::milliseconds(100); }

 private:
  /** The action comes when the pass copies the events. */
  bool endsDuring(void (ConflictFreeDB::*restamp)(const EITMap&),
                  const std::function<void()>& action) {
    constexpr size_t kEvents = 1000;
    const EITMap eits = mapOf({makeEit(1, 0x4E, 0, std::vector<uint64_t>(kEvents))});
    std::future<void> other;
    bool endedMeanwhile = false;
    {
      const AllocationHook passing(kEvents * sizeof(EITEvent), [&] {
        other = std::async(std::launch::async, action);
        endedMeanwhile = other.wait_for(patience_) == std::future_status::ready;
      });
      (database_.*restamp)(eits);
    }
    other.get();
    return endedMeanwhile;
  }

  std::chrono::milliseconds patience_{0};
};

TEST_F(WhileRestamping, AnEitCannotBeSet) {
  const auto setEit = [this] {
    EIT out;
    EXPECT_TRUE(database_.setConflictFreeEIT(out, EIT()));
  };
  expectToWait();
  EXPECT_FALSE(endsDuringPresentFollowing(setEit));
  EXPECT_FALSE(endsDuringSchedule(setEit));
  EXPECT_EQ(fake::timesLogged(3, "[setConflictFreeEIT] Not implemented!"), 2);
}

TEST_F(WhileRestamping, TheDatabaseCannotBeCleared) {
  const auto clear = [this] { database_.clearConflictFreeDB(); };
  expectToWait();
  EXPECT_FALSE(endsDuringPresentFollowing(clear));
  EXPECT_FALSE(endsDuringSchedule(clear));
}

TEST_F(WhileRestamping, TheOtherKindCanBeRestamped) {
  expectToEndMeanwhile();
  EXPECT_TRUE(endsDuringPresentFollowing([this] { database_.restampEITsch({}); }));
  EXPECT_TRUE(endsDuringSchedule([this] { database_.restampEITpf({}); }));
}

TEST_F(WhileRestamping, TheSameKindCannotBeRestamped) {
  expectToWait();
  EXPECT_FALSE(endsDuringPresentFollowing([this] { database_.restampEITpf({}); }));
  EXPECT_FALSE(endsDuringSchedule([this] { database_.restampEITsch({}); }));
}

TEST_F(WhileRestamping, EveryOtherTableIsFree) {
  expectToEndMeanwhile();
  EXPECT_TRUE(endsDuringPresentFollowing([this] {
    PAT pat;
    PMT pmt;
    CAT cat;
    TOT tot;
    NIT nit;
    BAT bat;
    EXPECT_TRUE(database_.setConflictFreePAT(pat, makePat(7, {{1, 0x100}})));
    EXPECT_TRUE(database_.setConflictFreeSDT(SDT()));
    EXPECT_TRUE(database_.setConflictFreePMT(pmt, makePmt(1, 0x101)));
    EXPECT_TRUE(database_.setConflictFreeCAT(cat, CAT()));
    EXPECT_TRUE(database_.setConflictFreeTOT(tot, TOT()));
    EXPECT_TRUE(database_.setConflictFreeNIT(nit, NIT()));
    EXPECT_TRUE(database_.setConflictFreeBAT(bat, BAT()));
  }));
}

}  // namespace
}  // namespace tevra::test
