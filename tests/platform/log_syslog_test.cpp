#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "platform/module_utils.h"
#include "tests/platform/syslog_recorder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using tevra::test::SyslogLine;
using tevra::test::takeSyslogLines;

class Syslog : public testing::Test {
 protected:
  Syslog() {
    log_setup(kLogDebug, kLogWithoutConsole);
    (void)takeSyslogLines();  // Those of other tests.
  }
};

TEST_F(Syslog, IsOpenedAsTornelWithTheProcessNumber) {
  const auto openings = tevra::test::syslogOpenings();
  ASSERT_EQ(openings.size(), 1U);
  EXPECT_EQ(openings.front().ident, "tornel");
  EXPECT_EQ(openings.front().option, LOG_PID);
  EXPECT_EQ(openings.front().facility, LOG_DAEMON);
}

TEST_F(Syslog, TakesEveryLevelAsThePriorityOfThatNumber) {
  for (int level = 3; level <= 7; ++level) {
    log_function(level, nullptr, "level %d", level);
  }
  EXPECT_THAT(takeSyslogLines(),
              ElementsAre(SyslogLine{LOG_ERR, "level 3"}, SyslogLine{LOG_WARNING, "level 4"},
                          SyslogLine{LOG_NOTICE, "level 5"}, SyslogLine{LOG_INFO, "level 6"},
                          SyslogLine{LOG_DEBUG, "level 7"}));
}

TEST_F(Syslog, TakesOtherLevelsAsTheNearestPriority) {
  log_setup(1000, kLogWithoutConsole);
  log_function(2, nullptr, "below");
  log_function(-1, nullptr, "far below");
  log_function(8, nullptr, "above");
  log_function(1000, nullptr, "far above");
  EXPECT_THAT(takeSyslogLines(),
              ElementsAre(SyslogLine{LOG_ERR, "below"}, SyslogLine{LOG_ERR, "far below"},
                          SyslogLine{LOG_DEBUG, "above"}, SyslogLine{LOG_DEBUG, "far above"}));
}

TEST_F(Syslog, TakesTheTagBeforeTheMessage) {
  log_function(kLogError, "fltr", "[%d] audio languages", 2);
  EXPECT_THAT(takeSyslogLines(), ElementsAre(SyslogLine{LOG_ERR, "fltr [2] audio languages"}));
}

TEST_F(Syslog, TakesNoBlankForAnEmptyOrAbsentTag) {
  log_function(kLogError, "", "empty");
  log_function(kLogError, nullptr, "absent");
  EXPECT_THAT(takeSyslogLines(),
              ElementsAre(SyslogLine{LOG_ERR, "empty"}, SyslogLine{LOG_ERR, "absent"}));
}

TEST_F(Syslog, DoesNotExpandAMessageAgain) {
  log_function(kLogError, "%s%n", "%s", "100%s%n");
  EXPECT_THAT(takeSyslogLines(), ElementsAre(SyslogLine{LOG_ERR, "%s%n 100%s%n"}));
}

TEST_F(Syslog, TakesNothingAboveTheHighestLevel) {
  log_setup(kLogWarning, kLogWithoutConsole);
  log_function(kLogNotice, nullptr, "too low");
  EXPECT_THAT(takeSyslogLines(), IsEmpty());
  log_function(kLogWarning, nullptr, "just right");
  EXPECT_THAT(takeSyslogLines(), ElementsAre(SyslogLine{LOG_WARNING, "just right"}));
}

TEST_F(Syslog, TakesLinesWithTheConsoleTooButNothingTwice) {
  log_setup(kLogError, kLogWithConsole);
  log_function(kLogError, nullptr, "both");
  EXPECT_THAT(takeSyslogLines(), ElementsAre(SyslogLine{LOG_ERR, "both"}));
}

TEST_F(Syslog, TakesMessagesOfAnyLength) {
  for (const size_t length : {0U, 1U, 1022U, 1023U, 1024U, 1025U, 100000U}) {
    const std::string message(length, 'x');
    log_function(kLogError, nullptr, "%s", message.c_str());
    EXPECT_THAT(takeSyslogLines(), ElementsAre(SyslogLine{LOG_ERR, message})) << length;
  }
}

TEST_F(Syslog, TakesTheRawFormatWhereItCannotBeExpanded) {
  const std::wstring unencodable = {static_cast<wchar_t>(0x7FFFFFFF)};
  log_function(kLogError, nullptr, "name %ls", unencodable.c_str());
  EXPECT_THAT(takeSyslogLines(), ElementsAre(SyslogLine{LOG_ERR, "name %ls"}));
}

/** Reading it ends the process, so formatting a line with it as a text does. */
const char* unreadableText() {
  void* page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return static_cast<const char*>(page);
}

using SyslogDeathTest = Syslog;

TEST_F(SyslogDeathTest, AFilteredLineIsNotFormatted) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const char* unreadable = unreadableText();
  log_setup(kLogNotice, kLogWithConsole);
  log_function(kLogInformation, nullptr, "%s", unreadable);
  log_function(kLogDebug, "tag", "%s", unreadable);
  EXPECT_THAT(takeSyslogLines(), IsEmpty());
  // A printed line is formatted: what stands above is no accident.
  EXPECT_DEATH(log_function(kLogNotice, nullptr, "%s", unreadable), "");
}

[[noreturn]] void logBeforeSetup() {
  log_function(kLogInformation, nullptr, "information");
  log_function(kLogNotice, nullptr, "notice");
  for (const SyslogLine& line : takeSyslogLines()) {
    std::cerr << line << ';';
  }
  std::cerr << tevra::test::syslogOpenings().at(0).ident;
  std::exit(0);
}

TEST(LogBeforeSetupDeathTest, PrintsUpToNoticeWithoutConsole) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(logBeforeSetup(), testing::ExitedWithCode(0), StrEq("5 \"notice\";tornel"));
}

}  // namespace
