#include "tests/system/kill_restart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/sanitizers.h"
#include "tests/system/record_files.h"

namespace tevra::test {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;
using fake::Notification;

constexpr Milliseconds kPromptAnswer{kSlowed ? 20'000 : 2'000};

DaemonSetup quiet() {
  DaemonSetup setup;
  setup.level = 4;
  return setup;
}

}  // namespace

KilledDaemon::KilledDaemon(uint32_t seed) : daemon_(root_.path(), quiet()), load_(seed) {
  load_.restart("", "", "");
}

std::string KilledDaemon::textOf(const std::string& file) const {
  return readText(root_ / file);
}

void KilledDaemon::comeBack() {
  judgeFiles();
  const std::string pids = textOf(pidRemapFile(0));
  const std::string tables = textOf(tableStoreFile(0));
  const std::string eits = textOf(eitVersionFile(0));
  restart();
  expectReadable();
  checkNotifications();
  EXPECT_EQ(textOf(pidRemapFile(0)), pids);
  load_.restart(pids, tables, eits);
  for (const std::string& complaint : load_.complaints()) {
    ADD_FAILURE() << complaint;
  }
}

void KilledDaemon::judgeFiles() {
  const auto& last = load_.lastCall();
  const std::string pids = textOf(pidRemapFile(0));
  const std::string tables = textOf(tableStoreFile(0));
  const std::string eits = textOf(eitVersionFile(0));
  found_ = {load_.pids().judge(pids, last), load_.tables().judge(tables, last),
            load_.eits().judge(eits, last)};
  count(tallies_[0], found_[0], pids);
  count(tallies_[1], found_[1], tables);
  count(tallies_[2], found_[2], eits);
}

void KilledDaemon::count(Tally& tally, Found found, const std::string& text) {
  EXPECT_NE(found, Found::kWrong) << tally.file << " holds what no call explains:\n" << text;
  ++tally.found.at(static_cast<size_t>(found));
  tally.empty += found == Found::kHalfWritten && text.empty() ? 1 : 0;
}

void KilledDaemon::expectFilesHoldAll() const {
  EXPECT_NE(load_.pids().judge(textOf(pidRemapFile(0)), {}), Found::kWrong);
  EXPECT_NE(load_.tables().judge(textOf(tableStoreFile(0)), {}), Found::kWrong);
  EXPECT_NE(load_.eits().judge(textOf(eitVersionFile(0)), {}), Found::kWrong);
}

void KilledDaemon::restart() {
  const auto before = Clock::now();
  daemon_.restart();
  ControlClient client;
  thrift::in_module::SIService answer;
  client->getSIData(answer);
  const auto taken = std::chrono::duration_cast<Milliseconds>(Clock::now() - before);
  EXPECT_LE(taken.count(), kPromptAnswer.count());
  slowestAnswer_ = std::max(slowestAnswer_, taken);
  ++starts_;
}

void KilledDaemon::expectReadable() const {
  Lines unread;
  for (const size_t file : {size_t{1}, size_t{2}}) {
    const std::string path = root_ / (file == 1 ? tableStoreFile(0) : eitVersionFile(0));
    if (!std::filesystem::exists(path) || found_.at(file) == Found::kHalfWritten) {
      unread.push_back("3 [MPTS0] Error reading file: " + path);
      unread.emplace_back("3 [MPTS0] Error reading tables from file");
    }
  }
  EXPECT_EQ(upToLevel(daemon_.logLines(), '3'), unread);
}

int64_t KilledDaemon::startsSeenByMainTask() {
  const auto methods = mainTask_.methods();
  return std::count(methods.begin(), methods.end(), "requestConfiguration");
}

void KilledDaemon::checkNotifications() {
  // Notifications come in order: the new daemon's first is behind the old one's last.
  ASSERT_TRUE(eventually([this] { return startsSeenByMainTask() == starts_; }));
  std::vector<Notification> notifications = mainTask_.received();
  const auto seen = static_cast<std::ptrdiff_t>(notificationsSeen_);
  notificationsSeen_ = notifications.size();
  notifications.erase(notifications.begin(), notifications.begin() + seen);
  checkEits(notifications);
  checkPids(notifications);
}

/** MainTask has got the versions of all answered calls in their order, then some of the last. */
void KilledDaemon::checkEits(const std::vector<Notification>& notifications) {
  std::vector<EitVersion> got;
  for (const Notification& notification : notifications) {
    if (notification.method.rfind("notifyEIT", 0) == 0) {
      const EIT& table = notification.eit;
      got.emplace_back(table.serviceId, table.tableId, table.version);
    }
  }
  std::vector<EitVersion> expected = load_.handedOut();
  ASSERT_GE(got.size(), expected.size());
  EitModel afterwards = load_.eits();
  const size_t answered = expected.size();
  if (load_.lastCall()) {
    const auto more = afterwards.apply(*load_.lastCall());
    expected.insert(expected.end(), more.begin(), more.end());
  }
  ASSERT_LE(got.size(), expected.size());
  EXPECT_TRUE(std::equal(got.begin(), got.end(), expected.begin()));
  versionsNotSaved_ += got.size() > answered && found_[2] != Found::kWholeWithLastCall ? 1 : 0;
}

/** The PIDs of the last PAT or PMT that MainTask has got are saved, answered or not. A file that
 * holds what the interrupted call changes has been judged, and may be ahead of MainTask. */
void KilledDaemon::checkPids(const std::vector<Notification>& notifications) const {
  PidModel saved;
  saved.restart(textOf(pidRemapFile(0)));
  const auto last = std::find_if(notifications.rbegin(), notifications.rend(), [](const auto& n) {
    return n.method == "notifyPAT" || n.method == "notifyPMT";
  });
  if (last == notifications.rend() || found_[0] == Found::kHalfWritten ||
      found_[0] == Found::kWholeWithLastCall) {
    return;
  }
  for (const auto& program : last->pat.programs) {
    EXPECT_NE(saved.inputPid(program.pid), -1) << "programme " << program.programNumber;
  }
  for (const auto& stream : last->pmt.esList) {
    EXPECT_NE(saved.inputPid(stream.pid), -1) << "programme " << last->pmt.programNumber;
  }
}

}  // namespace tevra::test
