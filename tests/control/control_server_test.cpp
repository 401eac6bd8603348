#include "control/control_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sys/socket.h>
#include <thrift/TApplicationException.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "records/global_output.h"
#include "tests/control/control_server_fixture.h"
#include "tests/control/tables.h"
#include "tests/fakes/fake_main_task.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/messages.h"

// A started server lives until the process ends, so every test that starts one of its own has an
// MPTS index of its own.

namespace tevra::test {
namespace {

using apache::thrift::TApplicationException;
using fake::FakeMainTask;
using fake::LogLine;
using fake::platform;
using fake::PlatformTest;
using testing::ElementsAre;
using testing::KilledBySignal;

using StartingControlServer = PlatformTest;
using ControlServer = ControlServerTest;

/** A listener that a server finds in its way. */
class OccupiedPort {
 public:
  explicit OccupiedPort(uint16_t port) : socket_(socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in6 address = {};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(port);
    const int on = 1;
    setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(socket_, 1) != 0) {
      throw std::runtime_error("cannot occupy the port");
    }
  }
  ~OccupiedPort() { close(socket_); }
  OccupiedPort(const OccupiedPort&) = delete;
  OccupiedPort& operator=(const OccupiedPort&) = delete;

 private:
  int socket_;
};

TEST_F(StartingControlServer, InvalidMptsIsLoggedAndGivesNoServer) {
  for (const int32_t index : {-1, 4, INT_MIN, INT_MAX}) {
    fake::clearLog();
    EXPECT_TRUE(startControlServer(index).empty());
    EXPECT_THAT(
        fake::logLines(),
        ElementsAre(LogLine{3, "", "MPTSIndex not valid [" + std::to_string(index) + "]."}));
  }
}

TEST_F(StartingControlServer, HandlerIsBuiltBetweenTheFirstLineAndTheLast) {
  FakeMainTask mainTask(1);
  const ThreadedSimpleServer server = startControlServer(1);
  EXPECT_FALSE(server.empty());
  const std::string directory = path("Tornel");
  EXPECT_THAT(
      fake::logLines(),
      ElementsAre(
          LogLine{4, "", "[MPTS1] Tornel listening on port [9225]"},
          LogLine{4, "", "[MPTS1] notifying to port [9257]"},
          LogLine{4, "", "IN mod slot [3] PID poll [300/499]"},
          LogLine{3, "", "[MPTS1] Error reading file: " + directory + "/TableStoreFile1"},
          LogLine{7, "", "[MPTS1] Reason: cannot open: No such file or directory"},
          LogLine{3, "", "[MPTS1] Error reading tables from file"},
          LogLine{3, "", "[MPTS1] Error reading file: " + directory + "/EITTableVersionStoreFile1"},
          LogLine{7, "", "[MPTS1] Reason: cannot open: No such file or directory"},
          LogLine{3, "", "[MPTS1] Error reading tables from file"},
          LogLine{7, "", "I need Configuration!!!"},
          LogLine{6, "", "Started threaded simple server, on port: 9225"}));
}

TEST_F(StartingControlServer, MptsThreeListensOn9227AndAcceptsAtOnce) {
  const ThreadedSimpleServer server = startControlServer(3);
  ControlClient client(3);
  EXPECT_TRUE(client->sendCmd(7));
  EXPECT_TRUE(fake::logged(4, "[MPTS3] Tornel listening on port [9227]"));
  EXPECT_TRUE(fake::logged(6, "Started threaded simple server, on port: 9227"));
  // From then on Thrift's own output is of level 7: a failed notification is one line of level 3.
  fake::clearLog();
  client->setSDT(SDT());
  const std::vector<LogLine> lines = fake::logLines();
  ASSERT_EQ(4U, lines.size());
  EXPECT_EQ(7, lines[2].level);
  EXPECT_THAT(lines[2].text, testing::HasSubstr("Connection refused"));
  EXPECT_EQ(3, lines[3].level);
}

TEST_F(StartingControlServer, ReleasingItLogsAndLeavesTheThreadServing) {
  {
    const ThreadedSimpleServer server = startControlServer(2);
    fake::clearLog();
  }
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{6, "", "Ended threaded simple server"}));
  ControlClient client(2);
  EXPECT_TRUE(client->setNIT(NIT()));
}

TEST_F(StartingControlServer, ReleasingAnEmptyOneIsSilent) {
  { const ThreadedSimpleServer server; }
  EXPECT_THAT(fake::logLines(), testing::IsEmpty());
}

/** In a process that starts nothing else, so that the port is free for the listener in the way. */
TEST(StartingControlServerDeathTest, PortInUseEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        platform().configurationRoot = "/nonexistent";
        const OccupiedPort occupied(9227);
        (void)startControlServer(3);
      },
      KilledBySignal(SIGABRT), "");
}

TEST_F(ControlServer, ThriftsOwnOutputBecomesLinesOfLevelSevenAndLeavesStandardErrorAlone) {
  testing::internal::CaptureStderr();
  globalOutput()("100% gone");
  globalOutput().printf("%s died: %d", "TServerTransport", 24);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_THAT(fake::logLines(),
              testing::IsSupersetOf(
                  {LogLine{7, "", "100% gone"}, LogLine{7, "", "TServerTransport died: 24"}}));
}

TEST_F(ControlServer, OneConnectionCarriesManyCalls) {
  ControlClient client;
  for (int i = 0; i < 200; ++i) {
    EXPECT_TRUE(client->sendCmd(7));
  }
  EXPECT_EQ(200, fake::timesLogged(7, "SI sendCmd"));
}

TEST_F(ControlServer, OneClientComesAfterTheOther) {
  for (int i = 0; i < 50; ++i) {
    ControlClient client;
    EXPECT_TRUE(client->sendCmd(7));
  }
  EXPECT_EQ(50, fake::timesLogged(7, "SI sendCmd"));
}

TEST_F(ControlServer, SecondClientWaitsUntilTheFirstLeaves) {
  ControlClient first;
  EXPECT_TRUE(first->sendCmd(7));
  ControlClient second;
  second->send_sendCmd(7);
  EXPECT_FALSE(second.hasAnswerWithin(200));
  EXPECT_TRUE(first->sendCmd(7));  // the first is still served
  EXPECT_EQ(2, fake::timesLogged(7, "SI sendCmd"));
  first.close();
  EXPECT_TRUE(second->recv_sendCmd());
  EXPECT_EQ(3, fake::timesLogged(7, "SI sendCmd"));
}

TEST_F(ControlServer, WaitingClientThatGivesUpHindersNobody) {
  ControlClient first;
  EXPECT_TRUE(first->sendCmd(7));
  {
    ControlClient impatient;
    impatient->send_sendCmd(1);
  }
  ControlClient third;
  third->send_sendCmd(2);
  first.close();
  EXPECT_TRUE(third->recv_sendCmd());
}

TEST_F(ControlServer, UnknownMethodIsAnsweredAndTheConnectionStaysUsable) {
  RawConnection connection(kFirstControlPort);
  connection.send(framed(callMessage("reboot")));
  const std::string reply = connection.receive(4);
  const std::string message = connection.receive(static_cast<unsigned char>(reply[3]));
  // An exception message, for the same method and the same sequence number.
  EXPECT_EQ(std::string("\x80\x01\x00\x03\x00\x00\x00\x06reboot\x00\x00\x00\x07", 18),
            message.substr(0, 18));
  connection.send(framed(callMessage("sendCmd")));
  (void)connection.receive(4);
  EXPECT_TRUE(fake::logged(7, "SI sendCmd"));
}

TEST_F(ControlServer, WholeRoadFromTablesToTheOutput) {
  ControlClient client;
  client->setPAT(patOf({0x100}));
  client->setSDT(sdtOf(1));
  client->setPMT(pmtOf(1, 0x101));
  std::map<int32_t, SPTSConfiguration> answer;
  client->getSrvOutputData(answer, outputOf(1, "Uno"));
  ASSERT_EQ(1U, answer.count(kGlobalSID));
  const OutputTables& tables = answer.at(kGlobalSID).outputTables;
  EXPECT_EQ(1U, tables.patPackets.size());
  EXPECT_EQ(1U, tables.sdtPackets.size());
  EXPECT_EQ(1U, tables.pmtPackets.size());
  EXPECT_EQ(1201, tables.dvbTables.pmt.programNumber);
  EXPECT_TRUE(client->sendCmd(0));
}

/** Stack of the calling thread, in bytes. */
size_t stackSize() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
    return 0;
  }
  size_t size = 0;
  pthread_attr_getstacksize(&attributes, &size);
  pthread_attr_destroy(&attributes);
  return size;
}

TEST_F(ControlServer, CallsRunOnAThreadOfItsOwnWithAStackOfOneMebibyte) {
  size_t size = 0;
  pthread_t thread = pthread_self();
  platform().textFromUTF8 = [&](const std::string& utf8, std::string& dvb) {
    size = stackSize();
    thread = pthread_self();
    dvb = utf8;
    return true;
  };
  ControlClient client;
  client->setPMT(pmtOf(1, 0x101));
  std::map<int32_t, SPTSConfiguration> answer;
  client->getSrvOutputData(answer, outputOf(1, "Uno"));
  EXPECT_EQ(0, pthread_equal(thread, pthread_self()));
  EXPECT_EQ(size_t{1024} * 1024, size);
}

TEST_F(ControlServer, StackSizeOfOtherThreadsIsAsBefore) {
  pthread_attr_t attributes;
  ASSERT_EQ(0, pthread_getattr_default_np(&attributes));
  size_t size = 0;
  pthread_attr_getstacksize(&attributes, &size);
  pthread_attr_destroy(&attributes);
  EXPECT_LT(size_t{1024} * 1024, size);
}

}  // namespace
}  // namespace tevra::test
