#pragma once

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/sanitizers.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/record_files.h"

namespace tevra::test {

/** The daemon's three files. */
enum StoreFile : size_t { kPids, kTables, kVersions };
inline constexpr std::array kStoreFiles = {kPids, kTables, kVersions};

/** "Pids" and so on. */
[[nodiscard]] const char* nameOf(StoreFile file);

/** Where it lies below the configuration root. */
[[nodiscard]] std::string relativePath(StoreFile file);

/** A start that takes longer has hung. */
inline constexpr std::chrono::seconds kPromptStart(kSlowed ? 50 : 5);

/** The error line of a save of the PIDs that fails. */
inline constexpr const char* kPidsNotSaved =
    "3 [ModChain0] Could not save conflict free database to disk";

/** What one round of tables and requests gave; see DiskFaults::serve. */
struct Served {
  int32_t pat = 0;  ///< versions
  int32_t sdt = 0;
  int32_t pmt = 0;
  int32_t eit = 0;
  int32_t videoPid = 0;  ///< output PIDs
  int32_t newPid = 0;
};

/**
 * A daemon whose files are in trouble, with a MainTask and a configuration root that does not exist
 * yet.
 *
 * writeGoodFiles() leaves files as an earlier daemon would have: versions 30 (PAT), 31 (SDT), 7
 * (PMT) and 31 (EIT), all of tables with other contents, and PIDs that a fresh daemon would choose
 * otherwise.
 */
class DiskFaults : public testing::Test {
 protected:
  [[nodiscard]] std::string pathOf(StoreFile file) const {
    return root_ + "/" + relativePath(file);
  }

  /** Makes the directories, too. */
  void writeGoodFiles() const;

  /** Starts the daemon, whatever ran before, and expects that within kPromptStart. */
  void start();
  void stop() { daemon_.reset(); }

  [[nodiscard]] Daemon& daemon() { return *daemon_; }

  /** Errors (level 3) since the start. */
  [[nodiscard]] Lines errors() const { return upToLevel(daemon_->logLines(), '3'); }

  /**
   * One round: every table of the television service, one output of it, one schedule. SDT, PMT and
   * EIT differ from all earlier rounds; the PMT has a new PID, so that all three files are saved.
   * Errors of the round go to roundErrors_.
   */
  Served serve();

  /** What the daemon logs at start about a file it cannot read. */
  [[nodiscard]] Lines loadErrors(StoreFile file) const;

  /** What one round makes it log about a file it cannot save. `freshPids`: the PAT's PIDs are new,
   * too. */
  [[nodiscard]] Lines saveErrors(StoreFile file, bool freshPids = true) const;

  /** The same of a round that can save neither tables nor versions, for lack of their directory. */
  [[nodiscard]] Lines noDirectoryErrors() const;

  /** Files that hold just what was handed out with `last`. */
  void expectFilesHold(const Served& last) const;

  /** A round that gives what is expected, without an error and with files that hold it. */
  void expectGoodRound(const Served& expected);

  fake::FakeMainTask mainTask_;
  TemporaryDirectory parent_;
  const std::string root_ = parent_ / "conf";
  const std::string directory_ = root_ + "/Tornel";
  DaemonSetup setup_;
  Lines roundErrors_;

 private:
  Served callRound(ControlClient& client);
  int32_t lastEitVersion();

  std::unique_ptr<Daemon> daemon_;
  int32_t rounds_ = 0;
};

/** What a round gives after files that were all good or, where named in `lost`, could not be read;
 * `round` counts from 1 since then. */
[[nodiscard]] Served expectedAfter(const std::array<bool, 3>& lost, int32_t round);
[[nodiscard]] Served expectedWithout(StoreFile lost, int32_t round);

/** All of `parts`, one after the other. */
[[nodiscard]] Lines together(std::initializer_list<Lines> parts);

bool operator==(const Served& a, const Served& b);
void PrintTo(const Served& served, std::ostream* out);

}  // namespace tevra::test
