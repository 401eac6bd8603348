#include "control/control_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <climits>
#include <map>
#include <string>
#include <vector>

#include "records/global_output.h"
#include "tests/control/control_server_fixture.h"
#include "tests/control/tables.h"
#include "tests/fakes/fake_platform.h"

// A started server lives until the process ends, so every test that starts one of its own has an
// MPTS index of its own.

namespace tevra::test {
namespace {

using fake::LogLine;
using fake::platform;
using fake::PlatformTest;
using testing::ElementsAre;

using StartingControlServer = PlatformTest;
using ControlServer = ControlServerTest;

TEST_F(StartingControlServer, InvalidMptsIsLoggedAndGivesNoServer) {
  for (const int32_t index : {-1, 4, INT_MIN, INT_MAX}) {
    fake::clearLog();
    EXPECT_TRUE(startControlServer(index).empty());
    EXPECT_THAT(
        fake::logLines(),
        ElementsAre(LogLine{3, "", "MPTSIndex not valid [" + std::to_string(index) + "]."}));
  }
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

TEST_F(ControlServer, ThriftsOwnOutputBecomesLinesOfLevelSevenAndLeavesStandardErrorAlone) {
  testing::internal::CaptureStderr();
  globalOutput()("100% gone");
  globalOutput().printf("%s died: %d", "TServerTransport", 24);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_THAT(fake::logLines(),
              testing::IsSupersetOf(
                  {LogLine{7, "", "100% gone"}, LogLine{7, "", "TServerTransport died: 24"}}));
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
