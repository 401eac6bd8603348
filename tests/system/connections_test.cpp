#include <gtest/gtest.h>

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/support/sanitizers.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;

class DaemonConnections : public testing::Test {
 protected:
  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
};

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

/** About 30 MB of schedule: `services` services with 16 tables of 60 kB each. */
EITMap largeSchedule(int32_t services) {
  EITMap map;
  for (int32_t service = 1; service <= services; ++service) {
    for (int32_t tableId = 0x50; tableId <= 0x5F; ++tableId) {
      EIT table = eit(service, tableId, 1700000000);
      for (int part = 0; part < 240; ++part) {
        table.events[0].descriptors.push_back(makeDescriptor(0x4E, std::string(250, 'x')));
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
