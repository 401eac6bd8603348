#include <atomic>
#include <chrono>
#include <future>
#include <new>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "in_module_types.h"
#include "platform/module_utils.h"
#include "store/main_task_client.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/wire.h"
#include "tests/store/raw_main_task.h"
#include "tests/support/allocation_hook.h"
#include "tests/support/files.h"
#include "tests/support/raw_socket.h"

// How notifications travel: their bytes, their connections and peers that do not behave.

namespace tevra::test {
namespace {

using apache::thrift::protocol::T_ONEWAY;
using apache::thrift::protocol::T_STRUCT;
using apache::thrift::protocol::TBinaryProtocol;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* kFailure = "Can't access to Notify server. EXCEPTION: ";
constexpr const char* kScheduleSuccess = "MainTask notified from SI (new EITsch)!!!";

constexpr milliseconds kTimeout(2000);

class MainTaskConnection : public fake::PlatformTest {
 protected:
  /** No notification leaves a descriptor open. */
  ~MainTaskConnection() override { EXPECT_EQ(openDescriptors(), descriptorsAtStart_); }

  /** That one level-3 line was logged and nothing else. */
  static void expectOneFailure() {
    const std::vector<fake::LogLine> lines = fake::logLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, kLogError);
    EXPECT_EQ(lines[0].tag, "");
    EXPECT_EQ(lines[0].text.rfind(kFailure, 0), 0U) << lines[0];
    EXPECT_GT(lines[0].text.size(), std::string(kFailure).size()) << "no reason given";
  }

 private:
  std::ptrdiff_t descriptorsAtStart_ = openDescriptors();
};

/** An EIT of about `bytes` bytes. */
EIT eitOf(size_t bytes) {
  EIT eit;
  eit.serviceId = 3401;
  eit.events.resize(bytes / 4096);
  for (EITEvent& event : eit.events) {
    event.descriptors.resize(1);
    event.descriptors[0].data.assign(4050, static_cast<char>(event.eventId));
  }
  return eit;
}

bool sendSchedule(const RawMainTask& mainTask, const EIT& eit) {
  Patience patience;
  return notifyEITSchedule(mainTask.port(), eit, patience);
}

/** The EIT in the frame of a notifyEITSchedule call, which must be the whole of `bytes`. */
EIT scheduleIn(const std::string& bytes) {
  TBinaryProtocol protocol(memoryOf(bytes));
  int32_t frameSize = 0;
  protocol.readI32(frameSize);
  EXPECT_EQ(static_cast<size_t>(frameSize) + 4, bytes.size());
  std::string name;
  apache::thrift::protocol::TMessageType type{};
  int32_t sequence = -1;
  protocol.readMessageBegin(name, type, sequence);
  EXPECT_EQ(name, "notifyEITSchedule");
  EXPECT_EQ(type, T_ONEWAY);
  apache::thrift::protocol::TType fieldType{};
  int16_t id = 0;
  protocol.readFieldBegin(name, fieldType, id);
  EXPECT_EQ(fieldType, T_STRUCT);
  EXPECT_EQ(id, 1);
  EIT eit;
  eit.read(&protocol);
  return eit;
}

std::string bytes(const char* text, size_t size) {
  return {text, size};
}

TEST_F(MainTaskConnection, TheStartUpRequestIsAFramedOnewayCallWithoutArgument) {
  RawMainTask mainTask;
  EXPECT_TRUE(requestConfiguration({0, mainTask.port()}));
  mainTask.accept();
  EXPECT_EQ(mainTask.readToEnd(), bytes("\x00\x00\x00\x21"
                                        "\x80\x01\x00\x04"
                                        "\x00\x00\x00\x14requestConfiguration"
                                        "\x00\x00\x00\x00"
                                        "\x00",
                                        37));
}

TEST_F(MainTaskConnection, TheNIMValueIsFieldOneOfItsCall) {
  RawMainTask mainTask;
  NotificationTarget target = {0, mainTask.port()};
  EXPECT_TRUE(notifyNIM(target, -2));
  mainTask.accept();
  EXPECT_EQ(mainTask.readToEnd(), bytes("\x00\x00\x00\x1D"
                                        "\x80\x01\x00\x04"
                                        "\x00\x00\x00\x09notifyNIM"
                                        "\x00\x00\x00\x00"
                                        "\x08\x00\x01\xFF\xFF\xFF\xFE"
                                        "\x00",
                                        33));
}

TEST_F(MainTaskConnection, ATableIsFieldOneOfItsCall) {
  RawMainTask mainTask;
  PAT pat;
  pat.transportStreamId = 905;
  EXPECT_TRUE(notifyPAT(mainTask.port(), pat));
  mainTask.accept();
  const std::string argument = bytes("\x0C\x00\x01", 3) + binaryOf(pat) + std::string(1, '\0');
  const std::string call = mainTask.readToEnd();
  ASSERT_GT(call.size(), argument.size());
  EXPECT_EQ(call.substr(call.size() - argument.size()), argument);
}

TEST_F(MainTaskConnection, EveryNotificationHasAConnectionOfItsOwn) {
  RawMainTask mainTask;
  EXPECT_TRUE(notifySDT(mainTask.port(), SDT()));
  EXPECT_TRUE(notifyBAT(mainTask.port(), BAT()));
  for (const char* name : {"notifySDT", "notifyBAT"}) {
    mainTask.accept();
    EXPECT_EQ(mainTask.readToEnd().substr(12, 9), name);
  }
  EXPECT_FALSE(mainTask.connectionWaits());
}

TEST_F(MainTaskConnection, AMainTaskThatHangsUpIsOneFailureAndNotRetried) {
  RawMainTask mainTask;
  std::future<bool> sent =
      std::async(std::launch::async, [&] { return sendSchedule(mainTask, eitOf(12'000'000)); });
  mainTask.accept();
  // In the middle of the call: its buffers are full by now.
  EXPECT_EQ(sent.wait_for(milliseconds(300)), std::future_status::timeout);
  mainTask.reset();
  EXPECT_FALSE(sent.get());
  EXPECT_EQ(
      fake::logLines(),
      (std::vector<fake::LogLine>{
          {kLogError, "", kFailure + std::string("write() send(): Connection reset by peer")}}));
  EXPECT_FALSE(mainTask.connectionWaits());
}

TEST_F(MainTaskConnection, AFailureLeavesTheNextNotificationNoneTheWorse) {
  RawMainTask mainTask;
  std::future<bool> sent =
      std::async(std::launch::async, [&] { return sendSchedule(mainTask, eitOf(12'000'000)); });
  mainTask.accept();
  mainTask.reset();
  EXPECT_FALSE(sent.get());
  expectOneFailure();
  fake::clearLog();
  EXPECT_TRUE(notifyCAT(mainTask.port(), CAT()));
  mainTask.accept();
  EXPECT_EQ(mainTask.readToEnd().substr(12, 9), "notifyCAT");
  EXPECT_EQ(
      fake::logLines(),
      (std::vector<fake::LogLine>{{kLogDebug, "", "MainTask notified from SI (new CAT)!!!"}}));
}

TEST_F(MainTaskConnection, WhatIsUnderWayWhenTheCallReturnsArrivesWhole) {
  RawMainTask mainTask;
  const EIT eit = eitOf(1'000'000);
  EXPECT_TRUE(sendSchedule(mainTask, eit));
  // The client has closed its side by now and this one has not read a byte.
  mainTask.accept();
  EXPECT_TRUE(scheduleIn(mainTask.readToEnd()) == eit);
  EXPECT_TRUE(fake::logged(kLogDebug, kScheduleSuccess));
}

TEST_F(MainTaskConnection, LackOfMemoryIsRaisedAndNotTakenForAFailingCall) {
  RawMainTask mainTask;
  const EIT eit = eitOf(1'000'000);
  const AllocationHook failing(size_t{256} * 1024, [] { throw std::bad_alloc(); });
  EXPECT_THROW(sendSchedule(mainTask, eit), std::bad_alloc);
  EXPECT_TRUE(fake::logLines().empty());
}

TEST_F(MainTaskConnection, AReaderThatTakesItsTimeGetsALargeNotificationWhole) {
  RawMainTask mainTask;
  const EIT eit = eitOf(12'000'000);
  std::future<bool> sent =
      std::async(std::launch::async, [&] { return sendSchedule(mainTask, eit); });
  mainTask.accept();
  EXPECT_EQ(sent.wait_for(milliseconds(300)), std::future_status::timeout)
      << "the kernel's buffers take all of it: this tests nothing";
  EXPECT_TRUE(scheduleIn(mainTask.readToEnd()) == eit);
  EXPECT_TRUE(sent.get());
  EXPECT_EQ(fake::logLines(), (std::vector<fake::LogLine>{{kLogDebug, "", kScheduleSuccess}}));
}

/** What a notification costs: the time-out once, not once for every part that the kernel takes. */
template <class Notify>
void expectToCostTheTimeOutOnce(Notify notify) {
  const auto start = Clock::now();
  EXPECT_FALSE(notify());
  const auto elapsed = Clock::now() - start;
  EXPECT_GE(elapsed, kTimeout - milliseconds(100));
  EXPECT_LT(elapsed, 2 * kTimeout - milliseconds(100));
}

TEST_F(MainTaskConnection, AMainTaskThatNeverReadsCostsTheSendTimeOut) {
  RawMainTask mainTask;
  const EIT eit = eitOf(12'000'000);
  expectToCostTheTimeOutOnce([&] { return sendSchedule(mainTask, eit); });
  EXPECT_EQ(fake::logLines(),
            (std::vector<fake::LogLine>{
                {kLogError, "", kFailure + std::string("send timeout expired")}}));
}

TEST_F(MainTaskConnection, AMainTaskThatHardlyReadsCostsTheSendTimeOutToo) {
  RawMainTask mainTask;
  const EIT eit = eitOf(12'000'000);
  std::atomic<int> pauseMs(50);
  std::future<void> reader = std::async(std::launch::async, [&] {
    mainTask.accept();
    // The rest of what was under way comes in order, but the call is not whole.
    EXPECT_LT(mainTask.readToEnd(pauseMs).size(), size_t{12'000'000});
  });
  expectToCostTheTimeOutOnce([&] { return sendSchedule(mainTask, eit); });
  expectOneFailure();
  pauseMs = 0;
  reader.get();
}

TEST_F(MainTaskConnection, AMainTaskThatNeverAcceptsCostsTheSendTimeOut) {
  RawMainTask mainTask(0);
  // The kernel completes connections until the backlog is full.
  const FullBacklog others(mainTask.port(), 4);
  expectToCostTheTimeOutOnce([&] { return notifyPMT(mainTask.port(), PMT()); });
  expectOneFailure();
}

TEST_F(MainTaskConnection, WhatConnectingTookIsNotGivenToSendingAgain) {
  RawMainTask mainTask(0);
  const FullBacklog others(mainTask.port(), 4);
  // There is room for the connection when the kernel asks a second time, after a second.
  std::future<void> room = std::async(std::launch::async, [&] {
    std::this_thread::sleep_for(milliseconds(300));
    mainTask.accept();
  });
  const EIT eit = eitOf(12'000'000);
  const auto start = Clock::now();
  EXPECT_FALSE(sendSchedule(mainTask, eit));
  EXPECT_LT(Clock::now() - start, kTimeout + milliseconds(700));
  expectOneFailure();
  room.get();
}

}  // namespace
}  // namespace tevra::test
