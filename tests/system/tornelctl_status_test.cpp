#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/files.h"
#include "tests/system/daemon.h"
#include "tests/system/tornelctl.h"

namespace tevra::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;

/** All that lies in the daemon's files. */
std::vector<std::string> contentOf(const TemporaryDirectory& root) {
  return {readText(root / "PIDRemap0"), readText(root / "Tornel/TableStoreFile0"),
          readText(root / "Tornel/EITTableVersionStoreFile0")};
}

TEST(TornelctlStatus, TellsOfADaemonAtWorkAndOfItsFilesWithoutMovingAnything) {
  const fake::FakeMainTask mainTask;
  const TemporaryDirectory root;
  Daemon daemon(root.path());
  ASSERT_EQ(tornelctl({"feed", samplePath()}).exitStatus, 0);
  ASSERT_EQ(tornelctl({"output", "--service", "101", "--output-sid", "1201"}).exitStatus, 0);
  const std::vector<std::string> before = contentOf(root);

  Outcome outcome;
  const Lines lines = daemon.linesOf([&] {
    outcome = tornelctl({"status", "--conf", root.path(), "--json"});
  });
  EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
  EXPECT_THAT(lines, ElementsAre("7 getSIData"));
  EXPECT_EQ(contentOf(root), before);
  const json set = json::parse(outcome.out).at("sets").at(0);
  EXPECT_EQ(set.at("daemon").at("state"), "answers");
  EXPECT_EQ(set.at("mainTask").at("listens"), true);
  EXPECT_EQ(set.at("pids").at("transportStreamId"), 1101);
  const json& service = set.at("services").at(0);
  EXPECT_EQ(service.at("outputSID"), 1201);
  EXPECT_EQ(service.at("name"), "Service 1201");
  EXPECT_EQ(service.at("tables").at("startsLeft"), 4);

  daemon.kill();
  outcome = tornelctl({"status", "--conf", root.path()});
  EXPECT_EQ(outcome.exitStatus, 1);
  EXPECT_THAT(outcome.err, testing::StartsWith("tornelctl: MPTS 0: no daemon answers at "));
  EXPECT_THAT(outcome.out, testing::HasSubstr("\n  101      1201 "));
}

}  // namespace
}  // namespace tevra::test
