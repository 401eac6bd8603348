#include "store/main_task_client.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "platform/module_utils.h"
#include "tests/fakes/fake_main_task.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/sample_records.h"
#include "tests/store/raw_main_task.h"

// What is said, and to whom; main_task_connection_test.cpp has how it travels.

namespace tevra::test {
namespace {

constexpr uint16_t kPort = 9256;

/** One of the eleven notifications. */
struct Method {
  const char* name;
  bool (*send)(uint16_t port);
  int successLevel;
  const char* successLine;
  /** Whether the notification carries what `send` has sent. */
  bool (*carriesIt)(const fake::Notification& notification);
};

std::ostream& operator<<(std::ostream& out, const Method& method) {
  return out << method.name;
}

template <auto send, class Table>
bool sendSample(uint16_t port) {
  if constexpr (std::is_invocable_v<decltype(send), uint16_t, Table>) {
    return send(port, sample<Table>());
  } else {
    Patience patience;
    return send(port, sample<Table>(), patience);
  }
}

template <auto member, class Table>
bool carriesSample(const fake::Notification& notification) {
  return notification.*member == sample<Table>();
}

#define TORNEL_METHOD(name, Table, member, level, line)                                      \
  Method {                                                                                   \
#name, sendSample < &name, Table>, level, "MainTask notified from SI (new " line ")!!!", \
        carriesSample < &fake::Notification::member, Table>                                  \
  }

const Method kMethods[] = {
    {"notifyNIM",
     [](uint16_t port) {
       NotificationTarget target = {0, port};
       return notifyNIM(target, -7);
     },
     kLogWarning, "MainTask notified from NIM!!!",
     [](const fake::Notification& notification) { return notification.value == -7; }},
    TORNEL_METHOD(notifyPAT, PAT, pat, kLogWarning, "cf PAT"),
    TORNEL_METHOD(notifySDT, SDT, sdt, kLogDebug, "SDT"),
    TORNEL_METHOD(notifyPMT, PMT, pmt, kLogDebug, "PMT"),
    TORNEL_METHOD(notifyNIT, NIT, nit, kLogDebug, "NIT"),
    TORNEL_METHOD(notifyTOT, TOT, tot, kLogDebug, "TOT"),
    TORNEL_METHOD(notifyBAT, BAT, bat, kLogDebug, "BAT"),
    TORNEL_METHOD(notifyCAT, CAT, cat, kLogDebug, "CAT"),
    TORNEL_METHOD(notifyEITPresentFollowing, EIT, eit, kLogDebug, "EIT pf"),
    TORNEL_METHOD(notifyEITSchedule, EIT, eit, kLogDebug, "EITsch"),
    {"requestConfiguration",
     [](uint16_t port) {
       return requestConfiguration({0, port});
     },
     kLogDebug, "I need Configuration!!!", [](const fake::Notification&) { return true; }},
};

class EveryNotification : public fake::PlatformTest, public ::testing::WithParamInterface<Method> {
 protected:
  /** notifyNIM is true whatever becomes of the call. */
  static bool failure() { return std::string(GetParam().name) == "notifyNIM"; }
};

INSTANTIATE_TEST_SUITE_P(Methods, EveryNotification, ::testing::ValuesIn(kMethods),
                         ::testing::PrintToStringParamName());

TEST_P(EveryNotification, ReachesMainTaskAndLogsItsSuccess) {
  fake::FakeMainTask mainTask;
  EXPECT_TRUE(GetParam().send(kPort));
  EXPECT_EQ(fake::logLines(),
            (std::vector<fake::LogLine>{{GetParam().successLevel, "", GetParam().successLine}}));
  ASSERT_TRUE(mainTask.waitFor(1));
  ASSERT_EQ(mainTask.methods(), std::vector<std::string>{GetParam().name});
  EXPECT_TRUE(GetParam().carriesIt(mainTask.received()[0]));
}

TEST_P(EveryNotification, WithoutMainTaskIsOneErrorLine) {
  const RefusingPort nobody;
  EXPECT_EQ(GetParam().send(nobody.port()), failure());
  EXPECT_EQ(fake::logLines(),
            (std::vector<fake::LogLine>{{kLogError, "",
                                         "Can't access to Notify server. EXCEPTION: connect() "
                                         "failed: Connection refused"}}));
}

TEST_P(EveryNotification, ToPortZeroIsOneWarning) {
  EXPECT_EQ(GetParam().send(0), failure());
  EXPECT_EQ(fake::logLines(),
            (std::vector<fake::LogLine>{{kLogWarning, "", "Notification Port not set."}}));
}

class MainTaskClient : public fake::PlatformTest {};

TEST_F(MainTaskClient, NotificationsArriveInTheOrderOfTheCalls) {
  fake::FakeMainTask mainTask;
  std::vector<std::string> names;
  for (const Method& method : kMethods) {
    EXPECT_TRUE(method.send(kPort));
    names.emplace_back(method.name);
  }
  ASSERT_TRUE(mainTask.waitFor(names.size()));
  EXPECT_EQ(mainTask.methods(), names);
}

TEST_F(MainTaskClient, AMainTaskThatComesLaterHearsWhatIsSaidThenAndNothingBefore) {
  EXPECT_FALSE(notifySDT(kPort, SDT()));
  fake::FakeMainTask mainTask;
  EXPECT_TRUE(notifyPMT(kPort, PMT()));
  ASSERT_TRUE(mainTask.waitFor(1));
  EXPECT_EQ(mainTask.methods(), std::vector<std::string>{"notifyPMT"});
}

TEST_F(MainTaskClient, EmptyTablesAreNotifiedToo) {
  fake::FakeMainTask mainTask;
  Patience patience;
  EXPECT_TRUE(notifyPAT(kPort, PAT()));
  EXPECT_TRUE(notifyEITSchedule(kPort, EIT(), patience));
  ASSERT_TRUE(mainTask.waitFor(2));
  EXPECT_EQ(mainTask.received()[0].pat, PAT());
  EXPECT_EQ(mainTask.received()[1].eit, EIT());
}

TEST_F(MainTaskClient, TheNIMValueIsKeptWhateverBecomesOfTheCall) {
  const RefusingPort nobody;
  NotificationTarget target = {5, nobody.port()};
  EXPECT_TRUE(notifyNIM(target, INT32_MIN));
  EXPECT_EQ(target.value, INT32_MIN);
  EXPECT_EQ(target.port, nobody.port());
  NotificationTarget unset;
  EXPECT_TRUE(notifyNIM(unset, 9));
  EXPECT_EQ(unset.value, 9);
  EXPECT_EQ(unset.port, 0);
}

TEST_F(MainTaskClient, ANewTargetHasNeitherValueNorPort) {
  const NotificationTarget target;
  EXPECT_EQ(target.value, 0);
  EXPECT_EQ(target.port, 0);
}

TEST_F(MainTaskClient, APortIsStored) {
  uint16_t port = 0;
  EXPECT_TRUE(setNotificationPort(port, 9259));
  EXPECT_EQ(port, 9259);
  NotificationTarget target = {3, 0};
  EXPECT_TRUE(setNotificationPort(target, 0xFFFF));
  EXPECT_EQ(target.port, 0xFFFF);
  EXPECT_EQ(target.value, 3);
  EXPECT_TRUE(fake::logLines().empty());
}

TEST_F(MainTaskClient, PortZeroIsRefusedAndTheStoredOneStays) {
  uint16_t port = 9256;
  EXPECT_FALSE(setNotificationPort(port, 0));
  EXPECT_EQ(port, 9256);
  NotificationTarget target = {3, 9257};
  EXPECT_FALSE(setNotificationPort(target, 0));
  EXPECT_EQ(target.port, 9257);
  const fake::LogLine line = {kLogWarning, "", "Zero notification port!"};
  EXPECT_EQ(fake::logLines(), (std::vector<fake::LogLine>{line, line}));
}

}  // namespace
}  // namespace tevra::test
