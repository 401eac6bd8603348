#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <future>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <thrift/TApplicationException.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/support/sanitizers.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"

namespace tevra::test {
namespace {

using apache::thrift::TApplicationException;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TMessageType;
using apache::thrift::transport::TMemoryBuffer;
using fake::FakeMainTask;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

class DaemonConnections : public testing::Test {
 protected:
  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
};

void expectService() {
  ControlClient client;
  EXPECT_TRUE(client->sendCmd(7));
}

TEST_F(DaemonConnections, AreServedOneAfterTheOther) {
  auto first = std::make_unique<ControlClient>();
  EXPECT_TRUE((*first)->sendCmd(7));
  ControlClient second;
  auto answer = std::async(std::launch::async, [&] { return second->sendCmd(7); });
  EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
  EXPECT_TRUE((*first)->sendCmd(7));  // the first is still served
  first.reset();
  EXPECT_TRUE(answer.get());
}

TEST_F(DaemonConnections, MayComeAndGo) {
  for (int connection = 0; connection < 300; ++connection) {
    const RawConnection passing(kFirstControlPort);
  }
  expectService();
}

/** Adds the timers that established connections to `local` run, by the kernel's account in `file`.
 */
void addTimers(std::vector<int>& timers, const char* file, const std::string& local) {
  constexpr const char* kEstablished = "01";
  std::ifstream sockets(file);
  std::string line;
  while (std::getline(sockets, line)) {
    std::istringstream fields(line);
    std::string number, address, peer, state, queues, timer;
    fields >> number >> address >> peer >> state >> queues >> timer;
    if (state == kEstablished && address.find(local) != std::string::npos) {
      timers.push_back(std::stoi(timer, nullptr, 16));
    }
  }
}

/** Of the connections to a port of 127.0.0.1, which a server for both families has as IPv6 ones. */
std::vector<int> timersOf(int port) {
  char local[16];
  std::snprintf(local, sizeof local, "0100007F:%04X", static_cast<unsigned>(port));
  std::vector<int> timers;
  addTimers(timers, "/proc/net/tcp", local);
  addTimers(timers, "/proc/net/tcp6", local);
  return timers;
}

/** A client whose machine has died would hold the port for ever. */
TEST_F(DaemonConnections, AreProbedWhenTheyAreSilent) {
  constexpr int kKeepAliveTimer = 2;
  ControlClient client;
  EXPECT_TRUE(client->sendCmd(7));
  EXPECT_TRUE(
      eventually([] { return timersOf(kFirstControlPort) == std::vector<int>{kKeepAliveTimer}; }));
}

TEST_F(DaemonConnections, CarryAnyNumberOfCalls) {
  ControlClient client;
  for (int call = 0; call < 2000; ++call) {
    ASSERT_TRUE(client->sendCmd(7)) << call;
  }
}

TEST_F(DaemonConnections, SurviveAnUnknownMethod) {
  ControlClient client;
  auto& protocol = client.protocol();
  protocol.writeMessageBegin("noSuchMethod", apache::thrift::protocol::T_CALL, 41);
  protocol.writeStructBegin("noSuchMethod_args");
  protocol.writeFieldStop();
  protocol.writeStructEnd();
  protocol.writeMessageEnd();
  protocol.getTransport()->flush();
  std::string name;
  TMessageType type{};
  int32_t sequence = 0;
  protocol.readMessageBegin(name, type, sequence);
  EXPECT_EQ(name, "noSuchMethod");
  EXPECT_EQ(type, apache::thrift::protocol::T_EXCEPTION);
  EXPECT_EQ(sequence, 41);
  TApplicationException exception;
  exception.read(&protocol);
  protocol.readMessageEnd();
  EXPECT_EQ(exception.getType(), TApplicationException::UNKNOWN_METHOD);
  EXPECT_TRUE(client->sendCmd(7));
}

struct Garbage {
  const char* name;
  std::string bytes;
};

void PrintTo(const Garbage& garbage, std::ostream* out) {
  *out << garbage.name;
}

class DaemonGarbage : public DaemonConnections, public testing::WithParamInterface<Garbage> {};

TEST_P(DaemonGarbage, ClosesItsOwnConnectionOnly) {
  const RawConnection connection(kFirstControlPort);
  connection.send(GetParam().bytes);
  EXPECT_TRUE(connection.closedByPeer());
  EXPECT_TRUE(daemon_.running());
  expectService();
}

std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) {
    text.push_back(static_cast<char>(value));
  }
  return text;
}

/** A frame's length and its message. */
std::string frame(const std::string& message) {
  const auto length = static_cast<int>(message.size());
  return bytes({length >> 24 & 0xFF, length >> 16 & 0xFF, length >> 8 & 0xFF, length & 0xFF}) +
         message;
}

/** A call's beginning, up to its argument structure. */
std::string callOf(const std::string& method) {
  return bytes({0x80, 0x01, 0, 1, 0, 0, 0, static_cast<int>(method.size())}) + method +
         bytes({0, 0, 0, 1});
}

/** Structures within structures, as an unknown field. */
std::string nested(int depth) {
  std::string message = callOf("setPAT");
  for (int level = 0; level < depth; ++level) {
    message += bytes({0x0C, 0, 9});
  }
  return message + std::string(static_cast<size_t>(depth) + 1, '\0');
}

INSTANTIATE_TEST_SUITE_P(
    All, DaemonGarbage,
    testing::Values(Garbage{"HttpRequest", "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n"},
                    Garbage{"NegativeLength", bytes({0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3})},
                    Garbage{"LengthAboveTheLimit", bytes({0x04, 0x00, 0x00, 0x01})},
                    Garbage{"WrongVersion", frame(bytes({0x80, 0x02, 0, 1, 0, 0, 0, 0}))},
                    Garbage{"Noise", frame("\x91\xEE tornel? \x01\xFF\x7F")},
                    Garbage{"EmptyFrameThenNoise", frame("") + frame("\xFF\xFF\xFF\xFF\xFF")},
                    Garbage{"DeepNesting", frame(nested(1000))}),
    [](const auto& garbage) { return std::string(garbage.param.name); });

TEST_F(DaemonConnections, CutInTheMiddleOfACallDoNoHarm) {
  const std::string nameBeyondTheFrame = frame(bytes({0x80, 1, 0, 1, 0, 0, 1, 0, 's'}));
  for (const std::string& start : {frame(callOf("sendCmd")).substr(0, 9), bytes({0, 0}),
                                   frame(callOf("setPAT")), nameBeyondTheFrame}) {
    RawConnection(kFirstControlPort).send(start);
  }
  expectService();
  EXPECT_TRUE(daemon_.running());
}

TEST_F(DaemonConnections, LeftBeforeTheAnswerDoNoHarm) {
  const std::string call = frame(callOf("sendCmd") + bytes({8, 0, 1, 0, 0, 0, 7, 0}));
  for (int client = 0; client < 50; ++client) {
    RawConnection(kFirstControlPort).send(call + call + call);
  }
  expectService();
  EXPECT_TRUE(daemon_.running());
}

TEST_F(DaemonConnections, ThatClaimAnEndlessListAreClosed) {
  // setEITSchedule: map of one service, of one table, whose ninth member is a list of 2^31-1
  // structures.
  const std::string header =
      bytes({13, 0, 1, 8, 13, 0, 0,    0,  1, 0, 0,  0,    100,  8,    12,  0,
             0,  0, 1, 0, 0,  0, 0x50, 15, 0, 9, 12, 0x7F, 0xFF, 0xFF, 0xFF});
  const RawConnection connection(kFirstControlPort);
  connection.send(frame(callOf("setEITSchedule") + header));
  EXPECT_TRUE(connection.closedByPeer());
  EXPECT_TRUE(daemon_.running());
  expectService();
  EXPECT_THAT(daemon_.logLines(),
              Contains(AllOf(StartsWith("7 "), HasSubstr("larger than the rest of its frame"))));
}

/** About 30 MB of schedule: `services` services with 16 tables of 60 kB each. */
EITMap largeSchedule(int32_t services) {
  EITMap map;
  for (int32_t service = 1; service <= services; ++service) {
    for (int32_t tableId = 0x50; tableId <= 0x5F; ++tableId) {
      EIT table = eit(service, tableId, 1700000000);
      for (int part = 0; part < 240; ++part) {
        table.events[0].descriptors.push_back(descriptor(0x4E, std::string(250, 'x')));
      }
      map[service][tableId] = table;
    }
  }
  return map;
}

TEST_F(DaemonConnections, Carry30MegabytesOfScheduleAndAllOfItsNotifications) {
  constexpr int32_t kServices = 32;
  const EITMap schedule = largeSchedule(kServices);
  ControlClient client;
  client->setTOT(totAt(std::time(nullptr)));
  client->setEITSchedule(schedule);
  constexpr size_t kTables = kServices * 16;
  ASSERT_TRUE(mainTask_.waitFor(2 + kTables));
  const auto received = mainTask_.received();
  EIT last = schedule.at(kServices).at(0x5F);
  last.version = 1;
  EXPECT_EQ(received.back().eit, last);
}

TEST_F(DaemonConnections, AreNotWornOutBy120Megabytes) {
  const EITMap schedule = largeSchedule(32);
  ControlClient client;
  for (int call = 0; call < 4; ++call) {
    client->setEITSchedule(schedule);
  }
  EXPECT_TRUE(client->sendCmd(7));
}

/** A daemon that gets no further descriptor. */
class DescriptorShortage {
 public:
  explicit DescriptorShortage(pid_t daemon) : daemon_(daemon) {
    EXPECT_EQ(prlimit(daemon_, RLIMIT_NOFILE, nullptr, &normal_), 0);
    const rlimit none = {3, normal_.rlim_max};
    EXPECT_EQ(prlimit(daemon_, RLIMIT_NOFILE, &none, nullptr), 0);
  }
  ~DescriptorShortage() { EXPECT_EQ(prlimit(daemon_, RLIMIT_NOFILE, &normal_, nullptr), 0); }
  DescriptorShortage(const DescriptorShortage&) = delete;
  DescriptorShortage& operator=(const DescriptorShortage&) = delete;

 private:
  const pid_t daemon_;
  rlimit normal_ = {};
};

TEST_F(DaemonConnections, ThatWaitOutlastALackOfDescriptors) {
  if (kAddressSanitized) {
    GTEST_SKIP() << "the undefined behaviour sanitizer that comes along needs descriptors itself";
  }
  auto served = std::make_unique<ControlClient>();
  EXPECT_TRUE((*served)->sendCmd(7));
  ControlClient waiting;
  waiting->send_sendCmd(7);
  {
    const DescriptorShortage shortage(daemon_.pid());
    served.reset();
    ASSERT_TRUE(daemon_.waitForLine("3 Control server stopped accepting, starting it again"));
    EXPECT_TRUE(isListening(kFirstControlPort));  // others may still join the queue
  }
  EXPECT_TRUE(waiting->recv_sendCmd());
  EXPECT_TRUE(daemon_.running());
}

}  // namespace
}  // namespace tevra::test
