#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/record_files.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using testing::ElementsAre;

constexpr int32_t kInstances = 4;

/** The daemons of all four MPTS in one configuration root, each with its MainTask. */
class DaemonInstances : public testing::Test {
 protected:
  DaemonInstances() {
    for (int32_t index = 0; index < kInstances; ++index) {
      mainTasks_.push_back(std::make_unique<FakeMainTask>(index));
      DaemonSetup setup;
      setup.set = index;
      daemons_.push_back(std::make_unique<Daemon>(root_.path(), setup));
    }
  }

  TemporaryDirectory root_;
  std::vector<std::unique_ptr<FakeMainTask>> mainTasks_;
  std::vector<std::unique_ptr<Daemon>> daemons_;
};

/** A programme for every PID of a pool: all 200 less the first, which is never handed out. */
PAT patThatFillsThePool() {
  PAT pat = multiplexPat();
  pat.programs.clear();
  for (int32_t program = 1; program < 200; ++program) {
    pat.programs.emplace_back().programNumber = program;
    pat.programs.back().pid = 0x1000 + program;
  }
  return pat;
}

TEST_F(DaemonInstances, HandOutPidsOfFourDisjointPools) {
  std::set<int32_t> pids;
  for (int32_t index = 0; index < kInstances; ++index) {
    ControlClient client(index);
    client->setPAT(patThatFillsThePool());
    const auto remap = readRecord<thrift::in_module::PIDRemap>(root_ / pidRemapFile(index));
    ASSERT_EQ(remap.outputToInput.size(), 199U);
    EXPECT_EQ(remap.outputToInput.begin()->first, 101 + 200 * index);
    EXPECT_EQ(remap.outputToInput.rbegin()->first, 299 + 200 * index);
    for (const auto& [outputPid, inputPid] : remap.outputToInput) {
      EXPECT_TRUE(pids.insert(outputPid).second) << outputPid;
    }
    for (const std::string& line : daemons_[static_cast<size_t>(index)]->logLines()) {
      EXPECT_THAT(line, testing::Not(testing::HasSubstr("exhausted")));
    }
  }
  EXPECT_EQ(pids.size(), 4U * 199U);
}

TEST_F(DaemonInstances, KeepFilesOfTheirOwn) {
  for (int32_t index = 0; index < kInstances; ++index) {
    ControlClient client(index);
    giveMultiplex(client);
    (void)onlyOutput(client, televisionRequest("MPTS " + std::to_string(index)));
    client->setTOT(totAt(std::time(nullptr)));
    client->setEITSchedule(eitMap({eit(100 + index, 0x50, 0)}));
  }
  for (int32_t index = 0; index < kInstances; ++index) {
    const auto tables =
        readRecord<thrift::in_module::TableStoreFile>(root_ / tableStoreFile(index));
    EXPECT_THAT(tables.tableStores.at(kTelevision).sdt.services[0].descriptors[0].data,
                testing::HasSubstr("MPTS " + std::to_string(index)));
    EXPECT_THAT(
        readRecord<thrift::in_module::EITTableVersionStoreFile>(root_ / eitVersionFile(index))
            .versionStores,
        ElementsAre(testing::Key(100 + index)));
  }
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root_.path())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_EQ(names.size(), 3U * kInstances + 1U);  // and the directory
}

TEST_F(DaemonInstances, AreServedSideBySide) {
  std::vector<std::unique_ptr<ControlClient>> clients;
  for (int32_t index = 0; index < kInstances; ++index) {
    clients.push_back(std::make_unique<ControlClient>(index));
    EXPECT_TRUE((*clients.back())->sendCmd(7));
  }
  for (const auto& client : clients) {
    giveMultiplex(*client);
    EXPECT_EQ(onlyOutput(*client, televisionRequest()).outputTables.dvbTables.pat.version, 1);
  }
}

TEST_F(DaemonInstances, OutliveEachOther) {
  daemons_[1]->kill();
  for (const int32_t index : {0, 2, 3}) {
    ControlClient client(index);
    EXPECT_TRUE(client->sendCmd(7));
  }
  daemons_[1]->restart();
  ControlClient client(1);
  EXPECT_TRUE(client->sendCmd(7));
}

TEST_F(DaemonInstances, ASecondOneOfTheSameMptsAborts) {
  const auto second = runDaemon(root_.path(), {"--set", "2", "--console"});
  const auto end = second->waitForEnd();
  ASSERT_TRUE(end);
  EXPECT_EQ(end->signal, SIGABRT);
  EXPECT_THAT(second->standardError(),
              testing::HasSubstr("4 [MPTS2] Tornel listening on port [9226]\n"));
  EXPECT_THAT(second->standardError(), testing::Not(testing::HasSubstr("started ...")));
  ControlClient client(2);
  EXPECT_TRUE(client->sendCmd(7));
}

}  // namespace
}  // namespace tevra::test
