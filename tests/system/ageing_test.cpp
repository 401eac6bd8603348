#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <string>

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
using testing::Key;
using thrift::in_module::EITTableVersionStoreFile;
using thrift::in_module::TableStoreFile;

constexpr const char* kTableErased = "5 [MPTS0] 1201 is erased from the table store struct";
constexpr const char* kVersionsErased =
    "5 [MPTS0] 100 is erased from the EIT table version store struct";

class DaemonAgeing : public testing::Test {
 protected:
  /** Hands out tables of the radio service, which writes the table store file. */
  static void askForRadio() {
    ControlClient client;
    giveMultiplex(client);
    (void)onlyOutput(client, radioRequest());
  }

  static void setSchedule(int32_t serviceId) {
    ControlClient client;
    client->setTOT(totAt(std::time(nullptr)));
    client->setEITSchedule(eitMap({eit(serviceId, 0x50, 0)}));
  }

  TableStoreFile tables() { return readRecord<TableStoreFile>(root_ / tableStoreFile(0)); }
  EITTableVersionStoreFile versions() {
    return readRecord<EITTableVersionStoreFile>(root_ / eitVersionFile(0));
  }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
};

TEST_F(DaemonAgeing, DropsTablesAtTheFifthRestart) {
  {
    ControlClient client;
    giveMultiplex(client);
    (void)onlyOutput(client, televisionRequest());
  }
  EXPECT_EQ(tables().tableStores.at(kTelevision).restartCounter, 0);
  for (int32_t restart = 1; restart <= 4; ++restart) {
    daemon_.restart();
    askForRadio();
    EXPECT_EQ(tables().tableStores.at(kTelevision).restartCounter, restart);
    EXPECT_EQ(timesIn(daemon_.logLines(), kTableErased), 0);
  }
  daemon_.restart();
  EXPECT_EQ(timesIn(daemon_.logLines(), kTableErased), 1);
  askForRadio();
  EXPECT_THAT(tables().tableStores, ElementsAre(Key(kRadio)));
}

TEST_F(DaemonAgeing, DropsEitVersionsAtTheFifthRestartUnlessTheServiceIsBroadcast) {
  setSchedule(kTelevision);
  for (int32_t restart = 1; restart <= 4; ++restart) {
    daemon_.restart();
    setSchedule(kRadio);
    EXPECT_EQ(versions().versionStores.at(kTelevision).restartCounter, restart);
    EXPECT_EQ(versions().versionStores.at(kRadio).restartCounter, 0);
    EXPECT_EQ(timesIn(daemon_.logLines(), kVersionsErased), 0);
  }
  daemon_.restart();
  EXPECT_EQ(timesIn(daemon_.logLines(), kVersionsErased), 1);
  setSchedule(kRadio);
  EXPECT_THAT(versions().versionStores, ElementsAre(Key(kRadio)));
  EXPECT_EQ(versions().versionStores.at(kRadio).versions.at(0x50), 5);
}

TEST_F(DaemonAgeing, NeedsASaveToBeRemembered) {
  askForRadio();
  const std::string before = readText(root_ / tableStoreFile(0));
  for (int restart = 0; restart < 6; ++restart) {
    daemon_.restart();
  }
  EXPECT_EQ(readText(root_ / tableStoreFile(0)), before);
}

TEST_F(DaemonAgeing, ErasesWhatItFindsTooOldInKeyOrder) {
  TableStoreFile file;
  for (const int32_t service : {10, 20, 30}) {
    auto& store = file.tableStores[service];
    store.restartCounter = service == 20 ? 3 : 4;
    store.pmt.programNumber = service + 1000;
  }
  daemon_.kill();
  std::filesystem::create_directory(root_ / "Tornel");
  writeRecord(root_ / tableStoreFile(0), file);
  daemon_.restart();
  Lines erased;
  for (const std::string& line : daemon_.logLines()) {
    if (line[0] == '5') {
      erased.push_back(line);
    }
  }
  EXPECT_THAT(erased, ElementsAre("5 [MPTS0] 1010 is erased from the table store struct",
                                  "5 [MPTS0] 1030 is erased from the table store struct"));
  askForRadio();
  EXPECT_THAT(tables().tableStores, ElementsAre(Key(20), Key(kRadio)));
  EXPECT_EQ(tables().tableStores.at(20).restartCounter, 4);
}

}  // namespace
}  // namespace tevra::test
