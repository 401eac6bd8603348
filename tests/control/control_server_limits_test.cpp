#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "control/control_transport.h"
#include "tests/control/control_server_fixture.h"
#include "tests/control/tables.h"
#include "tests/support/messages.h"
#include "tests/support/sanitizers.h"

// What a client may send, and what becomes of the server when it sends more.

namespace tevra::test {
namespace {

using fake::logged;
using fake::LogLine;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::MatchesRegex;

class ControlServerLimits : public ControlServerTest {
 protected:
  static bool nextClientIsServed() {
    ControlClient client;
    return client->sendCmd(7);
  }
};

/** A schedule of `megabytes` million bytes on the wire, and a little more. */
EITMap largeSchedule(int megabytes) {
  constexpr size_t kPayload = 10000;
  EITMap eits;
  EIT& eit = eits[1][0x50];
  eit = makeEit(1, 0x50, 0, std::vector<uint64_t>(static_cast<size_t>(megabytes)));
  for (EITEvent& event : eit.events) {
    event.descriptors.assign(100, Descriptor());
    for (Descriptor& descriptor : event.descriptors) {
      descriptor.tag = 0x4E;
      descriptor.data.assign(kPayload, 'e');
    }
  }
  return eits;
}

TEST_F(ControlServerLimits, ScheduleOfThirtyMegabytesIsTaken) {
  ControlClient client;
  client->setEITSchedule(largeSchedule(30));
  EXPECT_TRUE(logged(7, "setInputEITsch: SID [0x0001] tid [0x50] v[0] nevents [30]"));
  EXPECT_TRUE(client->sendCmd(0));
}

TEST_F(ControlServerLimits, ConnectionNeverWearsOut) {
  ControlClient client;
  const EITMap eits = largeSchedule(30);
  for (int call = 0; call < 5; ++call) {
    client->setEITSchedule(eits);
  }
  EXPECT_EQ(5, fake::timesLogged(7, "Guardo EIT sch en DB local!"));
  EXPECT_TRUE(client->sendCmd(0));
}

TEST_F(ControlServerLimits, WhatIsNoCallClosesOnlyItsConnection) {
  std::string deep = callMessage("setPAT");
  deep.pop_back();
  for (int depth = 0; depth < 100000; ++depth) {
    deep += std::string("\x0C\x00\x63", 3);  // field 99, a struct
  }
  const std::vector<std::pair<const char*, std::string>> all = {
      {"frame beyond the limit", bigEndian(kMaxFrameSize + 1)},
      {"negative frame size", bigEndian(0xFFFFFFFF)},
      {"another protocol", "GET / HTTP/1.1\r\n\r\n"},
      {"yet another", "SSH-2.0-OpenSSH\r\n"},
      {"empty frame", framed("")},
      {"garbage", framed(std::string(100, '\xFF'))},
      {"list that no memory holds", framed(hugeListMessage(0x7FFFFFFF))},
      {"deep nesting", framed(deep)}};
  for (const auto& [what, bytes] : all) {
    {
      const RawConnection connection(kFirstControlPort);
      connection.send(bytes);
      EXPECT_TRUE(connection.closedByPeer()) << what;
    }
    EXPECT_TRUE(nextClientIsServed()) << what;
  }
}

/** The lines that tell of a refused call. */
std::vector<std::string> refusals() {
  std::vector<std::string> found;
  for (const LogLine& line : fake::logLines(4)) {
    if (line.text.rfind("Control call refused: ", 0) == 0) {
      found.push_back(line.text);
    }
  }
  return found;
}

TEST_F(ControlServerLimits, RefusedCallIsOneLineWithTheClaimTheLimitAndTheClient) {
  const RawConnection connection(kFirstControlPort);
  connection.send(framed(hugeListMessage(0x7FFFFFFF)) + framed(callMessage("sendCmd")));
  EXPECT_TRUE(connection.closedByPeer());
  EXPECT_THAT(refusals(), ElementsAre(MatchesRegex("Control call refused: elements of a container "
                                                   "\\[2147483647\\], limit \\[3\\], client "
                                                   "\\[127\\.0\\.0\\.1:[0-9]+\\]")));
}

TEST_F(ControlServerLimits, WhyAConnectionWasClosedIsALineForDebugging) {
  const RawConnection connection(kFirstControlPort);
  connection.send(framed(hugeListMessage(0x7FFFFFFF)));
  EXPECT_TRUE(connection.closedByPeer());
  EXPECT_THAT(
      fake::logLines(),
      Contains(AllOf(Field(&LogLine::level, 7),
                     Field(&LogLine::text, HasSubstr("larger than the rest of its frame")))));
}

TEST_F(ControlServerLimits, ClientThatLeavesInTheMiddleHindersNobody) {
  const std::string call = framed(callMessage("sendCmd"));
  for (size_t length = 0; length < call.size(); ++length) {
    RawConnection connection(kFirstControlPort);
    connection.send(call.substr(0, length));
  }
  EXPECT_TRUE(nextClientIsServed());
  EXPECT_EQ(1, fake::timesLogged(7, "SI sendCmd"));
}

TEST_F(ControlServerLimits, ClientThatDoesNotWaitForItsAnswerHindersNobody) {
  {
    RawConnection connection(kFirstControlPort);
    connection.send(framed(callMessage("sendCmd")));
  }
  EXPECT_TRUE(nextClientIsServed());
  EXPECT_EQ(2, fake::timesLogged(7, "SI sendCmd"));
}

/** Leaves the process without a free file descriptor. */
class DescriptorShortage {
 public:
  DescriptorShortage() {
    getrlimit(RLIMIT_NOFILE, &former_);
    rlimit limit = former_;
    limit.rlim_cur = 200;
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0) {
      throw std::runtime_error("cannot limit descriptors");
    }
    takeAll();
  }
  ~DescriptorShortage() {
    for (const int held : held_) {
      close(held);
    }
    setrlimit(RLIMIT_NOFILE, &former_);
  }
  DescriptorShortage(const DescriptorShortage&) = delete;
  DescriptorShortage& operator=(const DescriptorShortage&) = delete;

  /** Also what others have freed since. */
  void takeAll() {
    for (int held = open("/dev/null", O_RDONLY | O_CLOEXEC); held >= 0;
         held = open("/dev/null", O_RDONLY | O_CLOEXEC)) {
      held_.push_back(held);
    }
  }

 private:
  rlimit former_ = {};
  std::vector<int> held_;
};

TEST_F(ControlServerLimits, ClientThatCouldNotBeAcceptedIsServedLater) {
  if (kAddressSanitized) {
    GTEST_SKIP() << "the undefined behaviour sanitizer that comes along needs descriptors itself";
  }
  // Servers of earlier tests end their connections when they will: what they free lets a
  // connection be accepted, and is taken before the next connects.
  std::array<RawConnection, 20> clients;
  size_t connected = 0;
  {
    constexpr const char* kStopped = "Control server stopped accepting, starting it again";
    DescriptorShortage shortage;
    while (connected < clients.size() && !logged(3, kStopped)) {
      shortage.takeAll();
      clients[connected++].connect(kFirstControlPort);
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_TRUE(waitForLine(3, kStopped));
  }
  const RawConnection& waiting = clients[connected - 1];
  for (size_t accepted = 0; accepted + 1 < connected; ++accepted) {
    clients[accepted].finish();  // one client is served at a time
  }
  waiting.send(framed(callMessage("sendCmd")));
  EXPECT_EQ(4U, waiting.receive(4).size());
  EXPECT_TRUE(logged(7, "SI sendCmd"));
  EXPECT_TRUE(waitForLine(7, "TServerTransport died: "));
  waiting.finish();
  EXPECT_TRUE(nextClientIsServed());
}

}  // namespace
}  // namespace tevra::test
