#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/system/daemon.h"
#include "tests/system/kill_restart_load.h"

namespace tevra::test {

/** What kills did to one file. */
struct Tally {
  const char* file;
  std::array<int, 5> found = {};  ///< by Found
  int empty = 0;                  ///< of those half-written

  [[nodiscard]] int of(Found what) const { return found.at(static_cast<size_t>(what)); }
};

/**
 * A daemon under load, with a MainTask and an empty configuration root, that is killed and comes
 * back.
 *
 * Each file must hold what the answered calls have left, or that and what the interrupted call
 * changes: it may be ahead of what was handed out, never behind. Two exceptions are the order of
 * things: the PIDs of a CAT are saved with the next PAT or PMT, and EITs are notified before their
 * versions are saved, so that those of one interrupted call may be handed out again.
 */
class KilledDaemon {
 public:
  /** `seed` chooses the calls. */
  explicit KilledDaemon(uint32_t seed);

  [[nodiscard]] Daemon& daemon() { return daemon_; }
  [[nodiscard]] RunningLoad& load() { return load_; }
  [[nodiscard]] std::string textOf(const std::string& file) const;

  /** After a kill: holds the files, and what MainTask got, against the load, starts the daemon anew
   * and makes the load ready for it. Fails the test; a half-written file is only counted. */
  void comeBack();

  /** The files must hold what the load's calls have left, all of them answered. */
  void expectFilesHoldAll() const;

  [[nodiscard]] const std::array<Tally, 3>& tallies() const { return tallies_; }
  [[nodiscard]] std::chrono::milliseconds slowestAnswer() const { return slowestAnswer_; }

  /** How often EITs had been notified but not saved. */
  [[nodiscard]] int versionsNotSaved() const { return versionsNotSaved_; }

 private:
  void judgeFiles();
  void count(Tally& tally, Found found, const std::string& text);
  void restart();
  void expectReadable() const;
  void checkNotifications();
  void checkEits(const std::vector<fake::Notification>& notifications);
  void checkPids(const std::vector<fake::Notification>& notifications) const;
  [[nodiscard]] int64_t startsSeenByMainTask();

  fake::FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_;
  RunningLoad load_;
  size_t notificationsSeen_ = 0;
  int64_t starts_ = 1;
  std::chrono::milliseconds slowestAnswer_{0};
  std::array<Found, 3> found_ = {};
  int versionsNotSaved_ = 0;
  std::array<Tally, 3> tallies_ = {Tally{"PIDRemap0"}, Tally{"TableStoreFile0"},
                                   Tally{"EITTableVersionStoreFile0"}};
};

}  // namespace tevra::test
