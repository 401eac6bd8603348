#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/golden_file.h"
#include "tests/support/messages.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
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
  [[nodiscard]] static std::vector<std::string> answers() {
    std::vector<std::string> answers;
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

/** What MainTask is told, byte for byte. */
class SameNotificationsEverywhere : public testing::Test {
 protected:
  /** Makes a call that is followed by one notification. */
  void notifiedOf(const std::function<void()>& call) {
    call();
    notifications_.push_back(mainTask_.takeConnection());
  }

  /** Hands over a TOT so old that its difference to the system clock takes more than 32 bits.
   * @return that difference in seconds, as the daemon took it: below zero */
  std::time_t giveOldTot() {
    TOT tot = totAt(0);
    tot.utcTime = int64_t{15079} << 24 | 0x120000;  // 1900-03-01 12:00:00
    long long offset = 0;
    for (const std::string& line :
         daemon_.linesOf([&] { notifiedOf([&] { client_->setTOT(tot); }); })) {
      (void)std::sscanf(line.c_str(), "4 DVB to System Time offset set to [%lld] secs", &offset);
    }
    return offset;
  }

  RawListener mainTask_{kFirstNotificationPort};
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
  std::vector<std::string> notifications_ = {
      mainTask_.takeConnection()};  // the daemon asks for its configuration
  ControlClient client_;
};

TEST_F(SameNotificationsEverywhere, AreThoseOfEveryTable) {
  notifiedOf([&] { client_->setPAT(multiplexPat()); });
  notifiedOf([&] { client_->setSDT(multiplexSdt()); });
  notifiedOf([&] { client_->setPMT(televisionPmt()); });
  notifiedOf([&] { client_->setCAT(multiplexCat()); });
  const std::time_t offset = giveOldTot();
  ASSERT_LT(offset, std::time_t{-3'900'000'000});

  constexpr std::time_t kRestamped = 2'200'000'000;  // in 2039, beyond a signed 32-bit time
  notifiedOf([&] {
    client_->setEITPresentFollowing(mapOf({eit(kTelevision, 0x4E, kRestamped + offset)}));
  });
  notifiedOf([&] { client_->setEITSchedule(mapOf({eit(kRadio, 0x50, kRestamped + offset)})); });
  EXPECT_TRUE(matchesGolden("notifications", notifications_));
}

}  // namespace
}  // namespace tevra::test
