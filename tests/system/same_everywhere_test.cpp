#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "tests/control/messages.h"
#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/synth/golden_file.h"
#include "tests/system/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/raw_socket.h"
#include "tests/system/record_files.h"
#include "tests/system/tornelctl.h"

// A fixed sequence of calls must give the same bytes on every machine that the daemon is built for:
// each compares with the same golden files.

namespace tevra::test {
namespace {

/** Services of the sample multiplex, and one that is not in it. */
constexpr std::array kServices = {101, 102, 103, 104, 105};

SrvOutputRequest requestFor(int32_t service) {
  constexpr int32_t kNewIds = 1000;
  SrvOutputRequest request = televisionRequest("Señal " + std::to_string(service) + " €");
  request.inputSID = service;
  request.outputs[0].outputSID = kNewIds + service;
  return request;
}

/** The request as it lies in a frame. */
std::string wireRequest(int32_t service) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  thrift::in_module::im_SIControlSrvClient client(
      std::make_shared<apache::thrift::protocol::TBinaryProtocol>(buffer));
  client.send_getSrvOutputData(requestFor(service));
  return framed(buffer->getBufferAsString());
}

class SameEverywhere : public testing::Test {
 protected:
  void feedSample() const {
    const Outcome outcome = tornelctl({"feed", samplePath()});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
  }

  /** The answers to every request, packets and records, as they come over the wire. */
  [[nodiscard]] static Packets answers() {
    Packets answers;
    for (const int32_t service : kServices) {
      const RawConnection connection(kFirstControlPort);
      connection.send(wireRequest(service));
      connection.finish();
      answers.push_back(connection.readToEnd().value_or("none"));
    }
    return answers;
  }

  void expectFiles(const std::string& when) const {
    EXPECT_TRUE(matchesGoldenText("pids_" + when + ".json", readText(root_ / pidRemapFile(0))));
    EXPECT_TRUE(matchesGoldenText("tables_" + when + ".json", readText(root_ / tableStoreFile(0))));
    EXPECT_TRUE(
        matchesGoldenText("eit_versions_" + when + ".json", readText(root_ / eitVersionFile(0))));
  }

  fake::FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
};

TEST_F(SameEverywhere, AreTheAnswersPacketsAndFilesOfTheSampleAcrossARestart) {
  feedSample();
  EXPECT_TRUE(matchesGolden("answers_first", answers()));
  expectFiles("first");
  daemon_.restart();
  feedSample();
  EXPECT_TRUE(matchesGolden("answers_restarted", answers()));
  expectFiles("restarted");
}

}  // namespace
}  // namespace tevra::test
