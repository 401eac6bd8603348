#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "inputdb/input_table_db.h"
#include "platform/module_utils.h"
#include "tests/fakes/fake_platform.h"
#include "tests/inputdb/table_kinds.h"

// Meant for the thread sanitizer; without it the tables' own consistency is what can fail.

namespace tevra::test {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 1000;
constexpr size_t kElements = 20;

/** Both ends of the table say `mark`: a table put together from two would not. */
template <class Table>
Table marked(int32_t mark) {
  Table table;
  table.version = mark;
  Kind<Table>::enlarge(table, kElements + static_cast<size_t>(mark));
  return table;
}

template <class Table>
bool isWhole(const Table& table) {
  return table == marked<Table>(table.version);
}

PMT markedPMT(int32_t mark) {
  PMT pmt;
  pmt.programNumber = 1 + mark % 2;
  pmt.version = mark;
  pmt.esList.resize(kElements);
  pmt.esList.back().pid = mark;
  return pmt;
}

EITMap markedEITs(int32_t mark) {
  EITMap eits;
  for (const int32_t serviceId : {1, 2}) {
    EIT& eit = eits[serviceId][0x50 + mark % 2];
    eit.version = mark;
    eit.events.resize(kElements);
    eit.events.back().eventId = mark;
  }
  return eits;
}

bool isWhole(const PMT& pmt) {
  return pmt == markedPMT(pmt.version);
}

/** Both services are stored in one call: they agree on every table. */
bool isWhole(const EITMap& eits) {
  for (const auto& [tableId, eit] : eits.at(1)) {
    if (eit.events.back().eventId != eit.version || !(eit == eits.at(2).at(tableId))) {
      return false;
    }
  }
  return eits.size() == 2 && eits.at(1).size() == eits.at(2).size();
}

/** Sets, gets and clears every kind, counting the tables that are not whole. */
class Worker {
 public:
  Worker(InputTableDB& db, int32_t number) : db_(db), number_(number) {}

  void run() {
    for (int32_t round = 0; round < kRounds; ++round) {
      mark_ = round * kThreads + number_;
      single(PAT());
      single(SDT());
      single(CAT());
      single(NIT());
      single(BAT());
      single(TOT());
      pmts();
      eits();
      if (round % 5 == 4) {
        db_.clear();
      }
    }
  }

  [[nodiscard]] int torn() const { return torn_; }

 private:
  template <class Table>
  void single(Table out) {
    Kind<Table>::set(db_, marked<Table>(mark_ % 8));
    if (Kind<Table>::get(db_, out)) {
      torn_ += isWhole(out) ? 0 : 1;
    }
  }

  void pmts() {
    db_.setInputPMT(markedPMT(mark_));
    PMT pmt;
    if (db_.getInputPMT(pmt, 1)) {
      torn_ += isWhole(pmt) ? 0 : 1;
    }
    std::vector<PMT> all;
    (void)db_.getInputPMTs(all);  // false after another thread's clear
    for (const PMT& each : all) {
      torn_ += isWhole(each) ? 0 : 1;
    }
  }

  void eits() {
    db_.setInputEITpf(markedEITs(mark_));
    db_.setInputEITsch(markedEITs(mark_));
    EITMap out;
    if (db_.getInputEITpf(out)) {
      torn_ += isWhole(out) ? 0 : 1;
    }
    if (db_.getInputEITsch(out)) {
      torn_ += isWhole(out) ? 0 : 1;
    }
  }

  InputTableDB& db_;
  int32_t number_;
  int32_t mark_ = 0;
  int torn_ = 0;
};

class InputTableDBThreads : public fake::PlatformTest {};

TEST_F(InputTableDBThreads, EveryTableReadIsOneThatWasStored) {
  InputTableDB db;
  std::vector<Worker> workers;
  std::vector<std::thread> threads;
  for (int32_t number = 0; number < kThreads; ++number) {
    workers.emplace_back(db, number);
  }
  for (Worker& worker : workers) {
    threads.emplace_back([&worker] { worker.run(); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const Worker& worker : workers) {
    EXPECT_EQ(worker.torn(), 0);
  }
  EXPECT_EQ(fake::timesLogged(kLogDebug, Kind<TOT>::kLine), kThreads * kRounds);
  TOT tot;
  EXPECT_TRUE(db.getInputTOT(tot));
}

TEST_F(InputTableDBThreads, ClearsFromEverySideDoNotBlockEachOther) {
  InputTableDB db;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&db] {
      for (int round = 0; round < kRounds; ++round) {
        db.clear();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  PAT pat;
  EXPECT_FALSE(db.getInputPAT(pat));
}

}  // namespace
}  // namespace tevra::test
