#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/record_files.h"

namespace tevra::test {
namespace {

namespace fs = std::filesystem;

using fake::FakeMainTask;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kPidsNotSaved = "3 [ModChain0] Could not save conflict free database to disk";
constexpr const char* kTablesNotSaved = "3 [MPTS0] Error writing tables in file";
constexpr const char* kVersionsNotSaved = "3 [MPTS0] Error writing EIT table version in file";

class DaemonFaultyFiles : public testing::Test {
 protected:
  DaemonSetup setup_;
  FakeMainTask mainTask_;
  TemporaryDirectory parent_;
  const std::string root_ = parent_ / "conf";
  const std::string directory_ = root_ + "/Tornel";
};

Lines errorsOf(const Daemon& daemon, const std::function<void()>& call) {
  return upToLevel(daemon.linesOf(call), '3');
}

void setSchedule(ControlClient& client) {
  client->setTOT(totAt(std::time(nullptr)));
  client->setEITSchedule(eitMap({eit(kTelevision, 0x50, 0)}));
}

TEST_F(DaemonFaultyFiles, AMissingRootLosesPidsUntilTablesMakeIt) {
  const Daemon daemon(root_);
  EXPECT_FALSE(fs::exists(root_));
  ControlClient client;
  EXPECT_THAT(errorsOf(daemon, [&] { client->setPAT(multiplexPat()); }),
              ElementsAre(kPidsNotSaved));
  EXPECT_THAT(errorsOf(daemon, [&] { client->setPAT(multiplexPat()); }), IsEmpty());
  EXPECT_THAT(errorsOf(daemon, [&] { client->setPMT(televisionPmt()); }),
              ElementsAre(kPidsNotSaved));
  client->setSDT(multiplexSdt());
  EXPECT_THAT(errorsOf(daemon, [&] { (void)onlyOutput(client, televisionRequest()); }), IsEmpty());
  EXPECT_TRUE(fs::exists(root_ + "/" + tableStoreFile(0)));
  EXPECT_THAT(errorsOf(daemon, [&] { client->setPMT(radioPmt()); }), IsEmpty());
  const auto remap = readRecord<thrift::in_module::PIDRemap>(root_ + "/" + pidRemapFile(0));
  EXPECT_EQ(remap.inputToOutput.at(kVideoPid),
            kOutVideo);  // what could not be saved, too
}

TEST_F(DaemonFaultyFiles, AFileInPlaceOfTheRootFailsNoCall) {
  writeText(root_, "not a directory");
  const Daemon daemon(root_);
  ControlClient client;
  EXPECT_THAT(errorsOf(daemon, [&] { client->setPAT(multiplexPat()); }),
              ElementsAre(kPidsNotSaved));
  client->setPMT(televisionPmt());
  client->setSDT(multiplexSdt());
  const std::string noDirectory = "3 [MPTS0] Could not create directory: " + directory_;
  EXPECT_THAT(
      errorsOf(daemon,
               [&] { EXPECT_THAT(onlyOutput(client, televisionRequest()).pidItems, SizeIs(4)); }),
      ElementsAre(noDirectory, kTablesNotSaved));
  EXPECT_THAT(errorsOf(daemon, [&] { setSchedule(client); }),
              ElementsAre(noDirectory, kVersionsNotSaved));
  ASSERT_TRUE(mainTask_.waitFor(6));
  EXPECT_EQ(mainTask_.methods().back(), "notifyEITSchedule");
  EXPECT_EQ(readText(root_), "not a directory");
}

TEST_F(DaemonFaultyFiles, TheVersionsGoOnInMemory) {
  writeText(root_, "not a directory");
  const Daemon daemon(root_);
  ControlClient client;
  giveMultiplex(client);
  const auto first = onlyOutput(client, televisionRequest("a")).outputTables.dvbTables;
  const auto second = onlyOutput(client, televisionRequest("b")).outputTables.dvbTables;
  EXPECT_EQ(first.sdt.version, 1);
  EXPECT_EQ(second.sdt.version, 2);
  EXPECT_EQ(second.pat.version, 1);
}

TEST_F(DaemonFaultyFiles, DirectoriesInPlaceOfTheFilesFailNoCall) {
  for (const std::string& file : {pidRemapFile(0), tableStoreFile(0), eitVersionFile(0)}) {
    fs::create_directories(root_ + "/" + file);
  }
  const Daemon daemon(root_);
  ControlClient client;
  EXPECT_THAT(errorsOf(daemon, [&] { giveMultiplex(client); }),
              ElementsAre(kPidsNotSaved, kPidsNotSaved, kPidsNotSaved));
  EXPECT_THAT(errorsOf(daemon, [&] { (void)onlyOutput(client, televisionRequest()); }),
              ElementsAre("3 [MPTS0] Error writing file: " + directory_ + "/TableStoreFile0",
                          kTablesNotSaved));
  EXPECT_THAT(
      errorsOf(daemon, [&] { setSchedule(client); }),
      ElementsAre("3 [MPTS0] Error writing file: " + directory_ + "/EITTableVersionStoreFile0",
                  kVersionsNotSaved));
}

TEST_F(DaemonFaultyFiles, AFullDiskFailsNoCall) {
  fs::create_directories(directory_);
  for (const std::string& file : {pidRemapFile(0), tableStoreFile(0), eitVersionFile(0)}) {
    fs::create_symlink("/dev/full", root_ + "/" + file);
  }
  const Daemon daemon(root_);
  ControlClient client;
  EXPECT_THAT(errorsOf(daemon, [&] { client->setPAT(multiplexPat()); }),
              ElementsAre(kPidsNotSaved));
  client->setPMT(televisionPmt());
  client->setSDT(multiplexSdt());
  EXPECT_THAT(errorsOf(daemon, [&] { (void)onlyOutput(client, televisionRequest()); }),
              ElementsAre("3 [MPTS0] Error writing file: " + directory_ + "/TableStoreFile0",
                          kTablesNotSaved));
  EXPECT_THAT(
      errorsOf(daemon, [&] { setSchedule(client); }),
      ElementsAre("3 [MPTS0] Error writing file: " + directory_ + "/EITTableVersionStoreFile0",
                  kVersionsNotSaved));
}

TEST_F(DaemonFaultyFiles, WhatStandsInTheWayMayGo) {
  writeText(root_, "not a directory");
  const Daemon daemon(root_);
  ControlClient client;
  giveMultiplex(client);
  (void)onlyOutput(client, televisionRequest());
  fs::remove(root_);
  EXPECT_THAT(errorsOf(daemon, [&] { (void)onlyOutput(client, televisionRequest()); }), IsEmpty());
  const auto file = readRecord<thrift::in_module::TableStoreFile>(root_ + "/" + tableStoreFile(0));
  EXPECT_EQ(file.tableStores.count(kTelevision), 1U);
}

struct Content {
  const char* name;
  std::string text;
};

void PrintTo(const Content& content, std::ostream* out) {
  *out << content.name;
}

class DaemonDamagedFiles : public DaemonFaultyFiles, public testing::WithParamInterface<Content> {};

TEST_P(DaemonDamagedFiles, AreReportedAndReplaced) {
  fs::create_directories(directory_);
  for (const std::string& file : {pidRemapFile(0), tableStoreFile(0), eitVersionFile(0)}) {
    writeText(root_ + "/" + file, GetParam().text);
  }
  const Daemon daemon(root_);
  const Lines lines = daemon.logLines();
  EXPECT_EQ(timesIn(lines, "3 [MPTS0] Error reading file: " + directory_ + "/TableStoreFile0"), 1);
  EXPECT_EQ(
      timesIn(lines, "3 [MPTS0] Error reading file: " + directory_ + "/EITTableVersionStoreFile0"),
      1);
  EXPECT_EQ(timesIn(lines, "3 [MPTS0] Error reading tables from file"), 2);
  ControlClient client;
  giveMultiplex(client);
  EXPECT_EQ(onlyOutput(client, televisionRequest()).pidItems[0].outputPid, kOutTelevisionPmt);
  setSchedule(client);
  EXPECT_EQ(readRecord<thrift::in_module::TableStoreFile>(root_ + "/" + tableStoreFile(0))
                .tableStores.size(),
            1U);
  EXPECT_EQ(readRecord<thrift::in_module::EITTableVersionStoreFile>(root_ + "/" + eitVersionFile(0))
                .versionStores.size(),
            1U);
  EXPECT_EQ(readRecord<thrift::in_module::PIDRemap>(root_ + "/" + pidRemapFile(0))
                .inputToOutput.at(kVideoPid),
            kOutVideo);
}

INSTANTIATE_TEST_SUITE_P(
    All, DaemonDamagedFiles,
    testing::Values(Content{"Empty", ""}, Content{"NoJson", "tornel"},
                    Content{"BinaryNoise", std::string("\0\xFF\x80\x01{[", 6)},
                    Content{"CutShort", R"({"1":{"map":["i32","rec",1,{"100":{"1":{"i3)"},
                    Content{"ByteOutOfRange", R"({"1":{"i8":300}})"},
                    Content{"EndlessList", R"({"9":{"lst":["rec",50000000]}})"},
                    Content{"EndlessMap", R"({"1":{"map":["i32","rec",50000000,{}]}})"},
                    Content{"DeepNesting",
                            [] {
                              std::string text;
                              for (int depth = 0; depth < 2000; ++depth) {
                                text += R"({"9":{"rec":)";
                              }
                              return text;
                            }()}),
    [](const auto& content) { return std::string(content.param.name); });

}  // namespace
}  // namespace tevra::test
