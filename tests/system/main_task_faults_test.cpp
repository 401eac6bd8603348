#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/faulty_main_task.h"
#include "tests/system/multiplex.h"
#include "tests/system/process_figures.h"

// Whatever MainTask does, every control call returns: at most 2 s per notification, each that fails
// being one line of level 3.

namespace tevra::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* kNoAccess = "3 Can't access to Notify server. EXCEPTION: ";
constexpr const char* kRefused =
    "3 Can't access to Notify server. EXCEPTION: connect() failed: Connection refused";

/**
 * Ends for what would otherwise never end, not measures of it: a loaded machine, a sanitizer or an
 * emulator takes what it takes. That a notification waits for 2 s and no longer is a matter of its
 * socket, and tested there.
 */
constexpr milliseconds kPerNotification(30'000);

/** For calls that need not wait for MainTask. */
constexpr milliseconds kAtOnce(10'000);

/** More than all the buffers between two processes hold. */
constexpr size_t kLarge = 12'000'000;

struct Call {
  std::string name;
  std::function<void(ControlClient&)> make;
  size_t notifications;
};

/** Every call with tables of ordinary size. The EITs notify only once there is a time offset. */
std::vector<Call> everySmallCall() {
  using thrift::in_module::SIService;
  const auto now = [] { return totAt(std::time(nullptr)); };
  const EITMap following = mapOf({eit(1, 0x4E, 0), eit(2, 0x4E, 0)});
  const EITMap schedule = mapOf({eit(1, 0x50, 0), eit(1, 0x51, 0), eit(2, 0x50, 0)});
  return {
      {"getSIData",
       [](ControlClient& client) {
         SIService data;
         client->getSIData(data);
       },
       0},
      {"SISetData", [](ControlClient& client) { EXPECT_TRUE(client->SISetData({})); }, 0},
      {"sendCmd", [](ControlClient& client) { EXPECT_TRUE(client->sendCmd(7)); }, 0},
      {"setPAT", [](ControlClient& client) { client->setPAT(multiplexPat()); }, 1},
      {"setSDT", [](ControlClient& client) { client->setSDT(multiplexSdt()); }, 1},
      {"setPMT", [](ControlClient& client) { client->setPMT(televisionPmt()); }, 1},
      {"setNIT", [](ControlClient& client) { EXPECT_TRUE(client->setNIT(multiplexNit())); }, 0},
      {"setTOT", [now](ControlClient& client) { client->setTOT(now()); }, 1},
      {"setBAT", [](ControlClient& client) { EXPECT_TRUE(client->setBAT(multiplexBat())); }, 0},
      {"setCAT", [](ControlClient& client) { client->setCAT(multiplexCat()); }, 1},
      {"setEITPresentFollowing",
       [=](ControlClient& client) { client->setEITPresentFollowing(following); }, 2},
      {"setEITSchedule", [=](ControlClient& client) { client->setEITSchedule(schedule); }, 3},
      {"getSrvOutputData",
       [](ControlClient& client) {
         EXPECT_THAT(onlyOutput(client, televisionRequest()).pidItems, SizeIs(4));
       },
       0},
  };
}

Call smallCall(const std::string& name) {
  const std::vector<Call> calls = everySmallCall();
  return *std::find_if(calls.begin(), calls.end(),
                       [&](const Call& call) { return call.name == name; });
}

Descriptor largeDescriptor() {
  return makeDescriptor(0x4E, std::string(kLarge, 'x'));
}

Call largeSdt() {
  SDT sdt = multiplexSdt();
  sdt.services[0].descriptors.push_back(largeDescriptor());
  return {"setSDT", [sdt](ControlClient& client) { client->setSDT(sdt); }, 1};
}

Call largePmt() {
  PMT pmt = televisionPmt();
  pmt.descriptors.push_back(largeDescriptor());
  return {"setPMT", [pmt](ControlClient& client) { client->setPMT(pmt); }, 1};
}

Call largeCat() {
  CAT cat = multiplexCat();
  cat.descriptors.push_back(largeDescriptor());
  return {"setCAT", [cat](ControlClient& client) { client->setCAT(cat); }, 1};
}

Call largeTot() {
  TOT tot = totAt(std::time(nullptr));
  tot.descriptors.push_back(largeDescriptor());
  return {"setTOT", [tot](ControlClient& client) { client->setTOT(tot); }, 1};
}

EIT largeEit(int32_t tableId) {
  EIT table = eit(1, tableId, 0);
  table.events[0].descriptors.push_back(largeDescriptor());
  return table;
}

Call largeFollowing() {
  const EITMap eits = mapOf({largeEit(0x4E)});
  return {"setEITPresentFollowing",
          [eits](ControlClient& client) { client->setEITPresentFollowing(eits); }, 1};
}

Call largeSchedule() {
  const EITMap eits = mapOf({largeEit(0x50), largeEit(0x51)});
  return {"setEITSchedule", [eits](ControlClient& client) { client->setEITSchedule(eits); }, 2};
}

/** A daemon that knows the time offset, before anything happens to its MainTask. */
class Side {
 public:
  explicit Side(int32_t mptsIndex, int32_t level = 4)
      : mptsIndex_(mptsIndex), daemon_(root_.path(), setup(mptsIndex, level)) {
    const Lines lines = daemon_.linesOf([&] { smallCall("setTOT").make(client()); });
    EXPECT_EQ(timesIn(lines, kRefused), 1);
    release();
    descriptors_ = figures_.descriptors();
  }

  /** Makes the call, which must return in time; what it logs. */
  Lines linesOf(const Call& call, milliseconds atMost) {
    const auto start = Clock::now();
    const Lines lines = daemon_.linesOf([&] { call.make(client()); });
    EXPECT_LT(Clock::now() - start, atMost) << call.name;
    return lines;
  }

  /** Makes the call: every notification fails. */
  void expectFailures(const Call& call, milliseconds perNotification = kPerNotification) {
    const auto notifications = std::max<size_t>(call.notifications, 1);
    Lines lines = linesOf(call, perNotification * notifications);
    lines = withoutCallLine(upToLevel(lines, '3'));
    EXPECT_THAT(lines, SizeIs(call.notifications)) << call.name;
    EXPECT_THAT(lines, Each(StartsWith(kNoAccess))) << call.name;
  }

  /** Makes the call: none fails. */
  void expectSuccess(const Call& call, milliseconds atMost) {
    EXPECT_THAT(withoutCallLine(upToLevel(linesOf(call, atMost), '3')), IsEmpty()) << call.name;
  }

  /** That the daemon is none the worse for it. */
  void expectUnharmed() {
    EXPECT_TRUE(daemon_.running());
    expectSuccess(smallCall("sendCmd"), kAtOnce);
    release();
    EXPECT_TRUE(eventually([&] { return figures_.descriptors() <= descriptors_; }));
  }

  [[nodiscard]] int32_t mptsIndex() const { return mptsIndex_; }
  [[nodiscard]] const Daemon& daemon() const { return daemon_; }

 private:
  static DaemonSetup setup(int32_t mptsIndex, int32_t level) {
    DaemonSetup setup;
    setup.set = mptsIndex;
    setup.level = level;
    return setup;
  }

  /** Two calls log their names at level 3. */
  static Lines withoutCallLine(Lines lines) {
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const std::string& line) {
                                 return line == "3 setNIT" || line == "3 setBAT";
                               }),
                lines.end());
    return lines;
  }

  ControlClient& client() {
    if (client_ == nullptr) {
      client_ = std::make_unique<ControlClient>(mptsIndex_);
    }
    return *client_;
  }

  void release() { client_.reset(); }

  TemporaryDirectory root_;
  int32_t mptsIndex_;
  Daemon daemon_;
  ProcessFigures figures_{daemon_.pid()};
  std::unique_ptr<ControlClient> client_;
  int64_t descriptors_ = 0;
};

/** What one daemon goes through while others go through theirs: most of it is waiting. */
using Course = std::vector<Call>;

/** Each course on a daemon of its own, all at once, with MainTasks that `fault` makes. */
template <class Fault>
void expectEveryNotificationToFail(const std::vector<Course>& courses, Fault fault) {
  std::vector<std::unique_ptr<Side>> sides;
  std::vector<std::future<void>> done;
  for (size_t index = 0; index < courses.size(); ++index) {
    sides.push_back(std::make_unique<Side>(static_cast<int32_t>(index)));
  }
  for (size_t index = 0; index < courses.size(); ++index) {
    done.push_back(std::async(std::launch::async, [&, index] {
      Side& side = *sides[index];
      const auto mainTask = fault(side.mptsIndex());
      for (const Call& call : courses[index]) {
        side.expectFailures(call);
      }
    }));
  }
  for (size_t index = 0; index < courses.size(); ++index) {
    done[index].get();
    sides[index]->expectUnharmed();
  }
}

auto faulty(const FaultyMainTask::Behaviour& behaviour) {
  return [behaviour](int32_t mptsIndex) {
    return std::make_unique<FaultyMainTask>(mptsIndex, behaviour);
  };
}

/** A MainTask that has listened and never accepts, with more connections waiting than it lets. */
struct FullMainTask {
  explicit FullMainTask(int32_t mptsIndex)
      : listener(kFirstNotificationPort + mptsIndex, 0),
        full(kFirstNotificationPort + mptsIndex, 3) {}

  RawListener listener;
  FullBacklog full;
};

TEST(FaultyMainTaskCosts, NothingButALineWhenItIsAbsent) {
  Side side(0);
  for (const Call& call : everySmallCall()) {
    side.expectFailures(call, kAtOnce);
  }
  EXPECT_THAT(
      side.linesOf({"setTOT", [](ControlClient& client) { client->setTOT(totAt(0)); }, 1}, kAtOnce),
      ElementsAre(StartsWith("4 DVB to System Time offset"), kRefused, kRefused, kRefused, kRefused,
                  kRefused, kRefused));
  side.expectUnharmed();
}

TEST(FaultyMainTaskCosts, NothingWhenItNeverReadsOrdinaryTables) {
  Side side(0);
  FaultyMainTask mainTask(0, thatNeverReads());
  size_t notifications = 0;
  for (const Call& call : everySmallCall()) {
    side.expectSuccess(call, kAtOnce);
    notifications += call.notifications;
  }
  EXPECT_TRUE(eventually([&] { return mainTask.connections() == notifications; }));
  side.expectUnharmed();
}

TEST(FaultyMainTaskCosts, TwoSecondsAndALineWhenItNeverReadsLargeTables) {
  expectEveryNotificationToFail(
      {{largeSdt(), largeCat()}, {largePmt(), largeTot()}, {largeFollowing()}, {largeSchedule()}},
      faulty(thatNeverReads()));
}

TEST(FaultyMainTaskCosts, TwoSecondsAndALineWhenItsBacklogIsFull) {
  expectEveryNotificationToFail(
      {{smallCall("getSIData"), smallCall("setPAT"), smallCall("setSDT")},
       {smallCall("setPMT"), smallCall("setNIT"), smallCall("setCAT"), smallCall("setBAT")},
       {smallCall("setTOT"), smallCall("SISetData"), smallCall("setPAT"), smallCall("sendCmd")},
       {smallCall("setEITPresentFollowing")}},
      [](int32_t mptsIndex) { return std::make_unique<FullMainTask>(mptsIndex); });
}

TEST(FaultyMainTaskCosts, TwoSecondsAndALineAtStartUpWhenItsBacklogIsFull) {
  TemporaryDirectory root;
  const auto start = Clock::now();
  Daemon daemon(root.path());
  const auto startUp = Clock::now() - start;
  const FullMainTask mainTask(0);
  daemon.kill();
  const auto again = Clock::now();
  daemon.restart();
  EXPECT_GT(Clock::now() - again, milliseconds(1900));  // or the backlog was not full
  EXPECT_LT(Clock::now() - again, startUp + kPerNotification);
  const Lines lines = daemon.logLines();
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& line) { return line.rfind(kNoAccess, 0) == 0; }),
            1);
}

constexpr size_t kWithinACall[] = {0, 1, 3, 4, 5, 40, 4096, 100'000, 1'000'000, 3'000'000};

/** The ways in which it may end a connection after so many bytes. */
const std::pair<const char*, FaultyMainTask::Behaviour (*)(size_t)> kEnds[] = {
    {"closed", thatClosesAfter}, {"reset", thatResetsAfter}};

TEST(FaultyMainTaskCosts, ALineWhenItEndsTheConnectionAtAnyPointOfALargeTable) {
  Side side(0);
  for (const auto& [name, endsAfter] : kEnds) {
    for (const size_t bytes : kWithinACall) {
      SCOPED_TRACE(name + (" after " + std::to_string(bytes)));
      const FaultyMainTask mainTask(0, endsAfter(bytes));
      side.expectFailures(largePmt());
    }
  }
  side.expectUnharmed();
}

/** Which notifications came off is up to chance, but all of them were tried and told of. */
void expectALineForEach(Side& side, const std::vector<Call>& calls) {
  for (const Call& call : calls) {
    size_t told = 0;
    for (const std::string& line : side.linesOf(call, kAtOnce)) {
      told +=
          line.rfind(kNoAccess, 0) == 0 || line.find(" MainTask notified from SI ") == 1 ? 1 : 0;
    }
    EXPECT_EQ(told, call.notifications) << call.name;
  }
}

TEST(FaultyMainTaskCosts, ALineWhenItEndsTheConnectionAtAnyPointOfAnOrdinaryTable) {
  Side side(0, 7);
  for (const auto& [name, endsAfter] : kEnds) {
    for (const size_t bytes : {0U, 1U, 4U, 5U, 20U, 40U}) {
      SCOPED_TRACE(name + (" after " + std::to_string(bytes)));
      const FaultyMainTask mainTask(0, endsAfter(bytes));
      expectALineForEach(side, everySmallCall());
    }
  }
  side.expectUnharmed();
}

TEST(FaultyMainTaskCosts, NothingWhenItSendsGarbageBack) {
  Side side(0);
  for (const std::string& answer : {std::string("HTTP/1.1 400 Bad Request\r\n\r\n"),
                                    std::string(3, '\xFF'), std::string(1'000'000, '\x7F')}) {
    const FaultyMainTask mainTask(0, thatAnswers(answer));
    for (const Call& call : everySmallCall()) {
      side.expectSuccess(call, kAtOnce);
    }
    side.expectSuccess(largePmt(), kPerNotification);
  }
  side.expectUnharmed();
}

}  // namespace
}  // namespace tevra::test
