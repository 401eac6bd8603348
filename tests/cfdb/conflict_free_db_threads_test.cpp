#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "cfdb/conflict_free_db.h"
#include "tests/cfdb/conflict_free_db_fixture.h"
#include "tests/support/tables.h"

namespace tevra::test {
namespace {

using testing::IsEmpty;

constexpr int kRounds = 200;
constexpr int32_t kPmtPids = 0x100;   ///< PIDs of PMTs: 0x100 to 0x107
constexpr int32_t kEsPids = 0x200;    ///< of streams: 0x200 to 0x207
constexpr int32_t kEcmPids = 0x300;   ///< of ECMs: 0x300 to 0x307
constexpr int32_t kEmmPids = 0x400;   ///< of EMMs: 0x400 to 0x407
constexpr int32_t kFreePids = 0x500;  ///< asked for directly: 0x500 to 0x507
constexpr int32_t kPerKind = 8;

EITMap someEits(int32_t tableId) {
  const uint64_t time = dvbTime(60000, 12, 30, 0);
  return mapOf({makeEit(1, tableId, 0, {time}), makeEit(2, tableId, 0, {time}),
                makeEit(3, tableId, 0, {time})});
}

class ConflictFreeDBThreads : public ConflictFreeDBFixture {
 protected:
  /** Runs every job `rounds` times on a thread of its own, all at once. */
  static void runTogether(int rounds, const std::vector<std::function<void(int)>>& jobs) {
    std::promise<void> signal;
    const std::shared_future<void> start = signal.get_future().share();
    std::vector<std::thread> threads;
    threads.reserve(jobs.size());
    for (const auto& job : jobs) {
      threads.emplace_back([start, &job, rounds] {
        start.wait();
        for (int round = 0; round < rounds; ++round) {
          job(round);
        }
      });
    }
    signal.set_value();
    for (std::thread& thread : threads) {
      thread.join();
    }
  }

  void feedPat(int round, int32_t transportStreamId) {
    const int32_t pid = kPmtPids + round % kPerKind;
    PAT out;
    EXPECT_TRUE(
        database_.setConflictFreePAT(out, makePat(transportStreamId, {{1, pid}, {2, pid}})));
    EXPECT_EQ(out.programs.at(0).pid, out.programs.at(1).pid);
  }

  void feedPmt(int round) {
    const int32_t kind = round % kPerKind;
    const PMT pmt =
        makePmt(kind, kEsPids + kind,
                {makeStream(27, kEsPids + kind,
                            {makeCaDescriptor(1, static_cast<uint16_t>(kEcmPids + kind))})});
    PMT out;
    EXPECT_TRUE(database_.setConflictFreePMT(out, pmt));
    EXPECT_EQ(out.esList.size(), 1U);
    if (database_.getOutputPMT(out, kind)) {  // unless cleared in between
      EXPECT_THAT(out.esList.at(0).descriptors, IsEmpty());
    }
  }

  void feedCatAndEits(int round) {
    CAT out;
    EXPECT_TRUE(database_.setConflictFreeCAT(
        out, makeCat({makeCaDescriptor(1, static_cast<uint16_t>(kEmmPids + round % kPerKind))})));
    EITMap eits;
    EXPECT_TRUE(database_.getConflictFreeEITpf(eits, someEits(0x4E)));
    EXPECT_EQ(eits.size(), 3U);
    EXPECT_TRUE(database_.getConflictFreeEITsch(eits, someEits(0x50)));
    EXPECT_EQ(eits.size(), 3U);
    if (round % 10 == 0) {
      database_.clearConflictFreeDB();
    }
  }

  void readEverything(int round) {
    PAT pat;
    if (database_.getConflictFreePAT(pat)) {
      EXPECT_EQ(pat.programs.size(), 2U);
    }
    PMT pmt;
    if (database_.getConflictFreePMT(pmt, round % kPerKind)) {
      EXPECT_EQ(pmt.esList.size(), 1U);
    }
    CAT cat;
    if (database_.getConflictFreeCAT(cat)) {
      EXPECT_EQ(cat.descriptors.size(), 1U);
    }
    TOT tot;
    SDT sdt;
    EXPECT_TRUE(database_.setConflictFreeTOT(tot, TOT()));
    EXPECT_TRUE(database_.setConflictFreeSDT(SDT()));
    EXPECT_TRUE(database_.getConflictFreeTOT(tot));
    (void)database_.getConflictFreeSDT(sdt);  // may have been cleared
    (void)database_.getConflictFreePID(kFreePids + round % kPerKind);
    (void)database_.getInputPID(101 + round % (5 * kPerKind));
  }

  /** While one thread sets a table and another clears it, two read it: it is `held`, or missing. */
  template <class Table>
  void readWhile(const Table& held, const std::function<void()>& set,
                 const std::function<bool(Table&)>& get) {
    const auto read = [&](int) {
      Table out = held;
      (void)get(out);  // false after a clear
      EXPECT_EQ(out, held);
    };
    runTogether(kRounds, {[&](int) { set(); }, read, read,
                          [this](int) { database_.clearConflictFreeDB(); }});
  }

  /** Every input PID has an output PID of its own, which leads back to it. Returns the output PIDs.
   */
  std::set<int32_t> expectBijection() {
    std::set<int32_t> outputs;
    for (const int32_t first : {kPmtPids, kEsPids, kEcmPids, kEmmPids, kFreePids}) {
      for (int32_t input = first; input < first + kPerKind; ++input) {
        const int32_t output = database_.getConflictFreePID(input);
        EXPECT_TRUE(outputs.insert(output).second) << input << " shares " << output;
        EXPECT_EQ(database_.getInputPID(output), input);
      }
    }
    return outputs;
  }
};

TEST_F(ConflictFreeDBThreads, FourThreadsLeaveTheMappingABijectionWithoutGaps) {
  feedPat(0, 7);  // the first PAT restarts the mapping
  runTogether(
      kRounds,
      {[this](int round) { feedPat(round, 7); }, [this](int round) { feedPmt(round); },
       [this](int round) { feedCatAndEits(round); }, [this](int round) { readEverything(round); }});
  const std::set<int32_t> outputs = expectBijection();
  EXPECT_EQ(*outputs.begin(), 101);
  EXPECT_EQ(*outputs.rbegin(), 100 + 5 * kPerKind);
  EXPECT_EQ(database_.getConflictFreePID(-1), 101 + 5 * kPerKind);
}

TEST_F(ConflictFreeDBThreads, TheFileHoldsTheMappingOfFourThreads) {
  feedPat(0, 7);  // the first PAT restarts the mapping
  runTogether(
      2 * kPerKind,
      {[this](int round) { feedPat(round, 7); }, [this](int round) { feedPmt(round); },
       [this](int round) { feedCatAndEits(round); }, [this](int round) { readEverything(round); }});
  PMT out;
  EXPECT_TRUE(database_.setConflictFreePMT(out, makePmt(1, 0x1FFF)));  // saves what is left
  (void)expectBijection();
  const PIDRemap record = saved();
  EXPECT_EQ(record.transportStreamId, 7);
  EXPECT_EQ(record.inputToOutput.size(), 5U * kPerKind + 1);
  EXPECT_EQ(record.outputToInput.size(), record.inputToOutput.size());
  for (const auto& [input, output] : record.inputToOutput) {
    EXPECT_EQ(database_.getConflictFreePID(input), output);
    EXPECT_EQ(record.outputToInput.at(output), input);
  }
}

TEST_F(ConflictFreeDBThreads, RestartsInBetweenLeaveABijectionToo) {
  std::filesystem::remove(fake::platform().configurationRoot);  // a failing save takes no time
  runTogether(
      kRounds,
      {[this](int round) { feedPat(round, round % 16 / 4); }, [this](int round) { feedPmt(round); },
       [this](int round) { feedCatAndEits(round); }, [this](int round) { readEverything(round); }});
  feedPat(0, 99);
  const std::set<int32_t> outputs = expectBijection();
  EXPECT_EQ(*outputs.begin(), 101);
  EXPECT_EQ(*outputs.rbegin(), 100 + 5 * kPerKind);
}

// One kind of table at a time. The getters do nothing but read, so that a missing lock shows.

TEST_F(ConflictFreeDBThreads, EveryTableIsReadAndClearedWhileItIsSet) {
  PAT pat;
  readWhile<PAT>(
      makePat(7, {{1, 101}}),
      [&] {
        EXPECT_TRUE(database_.setConflictFreePAT(pat, makePat(7, {{1, 0x100}})));
      },
      [this](PAT& out) { return database_.getConflictFreePAT(out); });
  const SDT sdt = makeSdt({makeService(1), makeService(2), makeService(3)});
  readWhile<SDT>(
      sdt, [&] { EXPECT_TRUE(database_.setConflictFreeSDT(sdt)); },
      [this](SDT& out) { return database_.getConflictFreeSDT(out); });
  CAT cat;
  readWhile<CAT>(
      makeCat({makeCaDescriptor(1, 101)}),
      [&] {
        EXPECT_TRUE(database_.setConflictFreeCAT(cat, makeCat({makeCaDescriptor(1, 0x100)})));
      },
      [this](CAT& out) { return database_.getConflictFreeCAT(out); });
  PMT pmt;
  const PMT remapped = makePmt(1, 101, {makeStream(27, 101)});
  const auto setPmt = [&] {
    const PMT input = makePmt(1, 0x100, {makeStream(27, 0x100)});
    EXPECT_TRUE(database_.setConflictFreePMT(pmt, input));
  };
  readWhile<PMT>(remapped, setPmt,
                 [this](PMT& out) { return database_.getConflictFreePMT(out, 1); });
  readWhile<PMT>(remapped, setPmt, [this](PMT& out) { return database_.getOutputPMT(out, 1); });
}

TEST_F(ConflictFreeDBThreads, ATotIsReadWhileItIsSetAndNeverCleared) {
  const TOT tot = makeTot(dvbTime(60000, 12, 0, 0));
  TOT set;
  EXPECT_TRUE(database_.setConflictFreeTOT(set, tot));
  readWhile<TOT>(
      tot, [&] { EXPECT_TRUE(database_.setConflictFreeTOT(set, tot)); },
      [this](TOT& out) {
        const bool held = database_.getConflictFreeTOT(out);
        EXPECT_TRUE(held);
        return held;
      });
}

TEST_F(ConflictFreeDBThreads, TheMappingIsReadWhileItGrowsRestartsAndIsSaved) {
  PidAllocator pids(1);
  runTogether(kRounds, {[&pids](int round) { pids.followTransportStream(round / 10); },
                        [&pids](int round) { (void)pids.getConflictFreePID(round % 20); },
                        [&pids](int round) { (void)pids.getInputPID(301 + round % 20); },
                        [&pids](int round) {
                          if (round % 20 == 0) {
                            pids.resetPIDRemap();
                          }
                          pids.saveConflictFreeDB();
                        }});
  for (int32_t input = 0; input < 20; ++input) {
    EXPECT_EQ(pids.getInputPID(pids.getConflictFreePID(input)), input);
  }
}

}  // namespace
}  // namespace tevra::test
