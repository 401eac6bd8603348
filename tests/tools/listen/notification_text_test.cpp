#include "tools/listen/notification_text.h"

#include <sstream>

#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

using test::eitRecord;
using test::eventRecord;
using test::patRecord;
using test::pmtRecord;
using test::sdtRecord;
using test::serviceRecord;
using test::timeAt;
using testing::HasSubstr;
using testing::Not;
using Kind = TableKind;
using Options = NotificationTextOptions;

/** 1993-10-13 12:45:10.250 UTC */
constexpr std::chrono::milliseconds kNow(750516310250);

Options inUtc() {
  Options options;
  options.zone = Zone::kUtc;
  return options;
}

class NotificationTextTest : public testing::Test {
 protected:
  /** What is printed of a notification, each line without its time stamp, which is checked. */
  std::string printed(const Notification::Content& content, const Options& options = inUtc()) {
    const std::string stamp = "1993-10-13 12:45:10.250  ";
    std::istringstream raw(printedRaw(content, options));
    std::string text;
    for (std::string line; std::getline(raw, line);) {
      EXPECT_EQ(0U, line.find(stamp)) << line;
      text += line.substr(std::min(line.size(), stamp.size())) + "\n";
    }
    return text;
  }
  std::string printed(Kind kind, const SiTable& table, const Options& options = inUtc()) {
    return printed(NotifiedTable{kind, table}, options);
  }

  std::string printedRaw(const Notification::Content& content, const Options& options) {
    const auto* notified = std::get_if<NotifiedTable>(&content);
    return notificationText({std::chrono::system_clock::time_point(kNow), content},
                            notified == nullptr ? TableNews() : history_.add(*notified), options);
  }

  TableHistory history_;
};

TEST_F(NotificationTextTest, SumsUpTheFirstTableOfAKind) {
  EXPECT_EQ("PAT           transport stream 1, version 3, 2 programmes\n",
            printed(Kind::kPat, patRecord({{0, 16}, {1, 256}})));
  EXPECT_EQ("SDT           transport stream 1, version 3, 1 service\n",
            printed(Kind::kSdt, sdtRecord({serviceRecord(1, "Uno")})));
  EXPECT_EQ("PMT           service 101, version 3, 0 streams, PCR on PID 502\n",
            printed(Kind::kPmt, pmtRecord({})));
  EXPECT_EQ("CAT           version 3, 1 descriptor\n",
            printed(Kind::kCat, test::catRecord({test::caDescriptor(1, 2)})));
  EXPECT_EQ("EIT p/f       service 101, table 0x50, version 3, 1 event\n",
            printed(Kind::kEitPresentFollowing, eitRecord({EITEvent()})));
  EXPECT_EQ("EIT schedule  service 101, table 0x50, version 3, 0 events\n",
            printed(Kind::kEitSchedule, eitRecord({})));
  SDT other = sdtRecord({});
  other.tableId = 0x46;
  EXPECT_EQ("SDT           other transport stream 1, version 3, 0 services\n",
            printed(Kind::kSdt, other));
}

TEST_F(NotificationTextTest, PrintsNotificationsThatTheDaemonNeverSendsToo) {
  EXPECT_EQ("NIM           value 12\n", printed(NimValue{12}));
  EXPECT_EQ("NIT           network 0, version 0, 0 transport streams\n",
            printed(Kind::kNit, NIT()));
  EXPECT_EQ("BAT           bouquet 0, version 0, 0 transport streams\n",
            printed(Kind::kBat, BAT()));
}

TEST_F(NotificationTextTest, PrintsTheStartUpRequest) {
  EXPECT_EQ("configuration requested\n", printed(ConfigurationRequest()));
}

TEST_F(NotificationTextTest, SaysThatATableIsUnchanged) {
  (void)printed(Kind::kPmt, pmtRecord({}));
  EXPECT_EQ("PMT           service 101, version 3, 0 streams, PCR on PID 502, unchanged\n",
            printed(Kind::kPmt, pmtRecord({})));
}

TEST_F(NotificationTextTest, SaysThatTheVersionAloneIsAnother) {
  (void)printed(Kind::kPat, patRecord({}));
  PAT after = patRecord({});
  after.version = 4;
  EXPECT_EQ("PAT           transport stream 1, version 3 -> 4, 0 programmes, otherwise unchanged\n",
            printed(Kind::kPat, after));
}

TEST_F(NotificationTextTest, PrintsTheDifferencesBelowTheTable) {
  (void)printed(Kind::kSdt, sdtRecord({serviceRecord(1, "Uno"), serviceRecord(2, "Due")}));
  SDT after = sdtRecord({serviceRecord(1, "Uno HD"), serviceRecord(3, "Tre")});
  after.version = 4;
  EXPECT_EQ(
      "SDT           transport stream 1, version 3 -> 4, 2 services\n"
      "              - service 2 \"Due\": digital television, running\n"
      "              ~ service 1 \"Uno\": service name \"Uno\" -> \"Uno HD\"\n"
      "              + service 3 \"Tre\": digital television, running\n",
      printed(Kind::kSdt, after));
}

TEST_F(NotificationTextTest, PointsOutChangesWithoutANewVersion) {
  (void)printed(Kind::kPat, patRecord({}));
  EXPECT_EQ(
      "PAT           transport stream 1, version 3, 1 programme, changed with the same version\n"
      "              + programme 1: PID 256 (0x0100, PMT)\n",
      printed(Kind::kPat, patRecord({{1, 256}})));
}

TEST_F(NotificationTextTest, ComparesTheClockOfATotWithTheMachines) {
  TOT tot = test::totRecord(timeAt(0x124500));
  tot.descriptors = {
      test::descriptorRecord(0x58, std::string("ESP\x02\x01\x00\xC0\x79\x01\x00\x00\x02\x00", 13))};
  EXPECT_EQ(
      "TOT           1993-10-13 12:45:00 UTC, system clock +00:00:10, local time ESP +01:00\n",
      printed(Kind::kTot, tot));
  tot.utcTime = timeAt(0x124512);
  EXPECT_EQ(
      "TOT           1993-10-13 12:45:12 UTC (+00:00:12), system clock -00:00:02, local time ESP "
      "+01:00\n",
      printed(Kind::kTot, tot));
  tot.utcTime = 0xFFFFFFFFFF;
  EXPECT_THAT(printed(Kind::kTot, tot), HasSubstr("undefined, local time ESP +01:00\n"));
}

/** A PAT of so many programmes. */
PAT patOf(int count) {
  std::vector<std::pair<int, int>> programs;
  for (int i = 1; i <= count; ++i) {
    programs.emplace_back(i, 0x100 + i);
  }
  return patRecord(programs);
}

TEST_F(NotificationTextTest, CutsManyDifferencesShortUnlessAllAreAskedFor) {
  (void)printed(Kind::kPat, patOf(0));
  const std::string cut = printed(Kind::kPat, patOf(20));
  EXPECT_EQ(14, std::count(cut.begin(), cut.end(), '\n'));
  EXPECT_THAT(cut, HasSubstr("programme 12:"));
  EXPECT_THAT(cut, Not(HasSubstr("programme 13:")));
  EXPECT_THAT(cut, HasSubstr("              ... and 8 more (--all shows them)\n"));

  (void)printed(Kind::kPat, patOf(0));
  Options all = inUtc();
  all.all = true;
  const std::string whole = printed(Kind::kPat, patOf(20), all);
  EXPECT_EQ(21, std::count(whole.begin(), whole.end(), '\n'));
  EXPECT_THAT(whole, Not(HasSubstr("more")));
}

TEST_F(NotificationTextTest, DoesNotCutASingleDifference) {
  (void)printed(Kind::kPat, patOf(0));
  const std::string text = printed(Kind::kPat, patOf(13));
  EXPECT_EQ(14, std::count(text.begin(), text.end(), '\n'));
  EXPECT_THAT(text, HasSubstr("programme 13:"));
}

TEST_F(NotificationTextTest, WritesNoEscapeByteWithoutColours) {
  const std::string name =
      "\x15"
      "evil\x1B[2J\x1B]0;x\x07\xC2\x9B"
      "31m";
  (void)printed(Kind::kSdt, sdtRecord({serviceRecord(1, name)}));
  SDT after = sdtRecord({serviceRecord(1, "good")});
  after.services[0].descriptors.push_back(test::descriptorRecord(0x0A, "\x1B[2\x01"));
  const std::string text = printed(Kind::kSdt, after);
  EXPECT_THAT(text, HasSubstr("evil[2J]0;x31m"));
  for (const char c : text) {
    EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= 0x20) << text;
  }
  EXPECT_THAT(text, Not(HasSubstr("\xC2\x9B")));
}

TEST_F(NotificationTextTest, ColoursWhatComesWhatGoesAndWhatChanges) {
  Options options = inUtc();
  options.inColour = true;
  const NotifiedTable before = {Kind::kSdt,
                                sdtRecord({serviceRecord(1, "Uno"), serviceRecord(2, "Due")})};
  const std::string stamp = "\x1b[2m1993-10-13 12:45:10.250\x1b[0m  ";
  EXPECT_EQ(stamp + "\x1b[1mSDT           \x1b[0mtransport stream 1, version 3, 2 services\n",
            printedRaw(before, options));
  const NotifiedTable after = {Kind::kSdt,
                               sdtRecord({serviceRecord(1, "One"), serviceRecord(3, "Tre")})};
  const std::string text = printedRaw(after, options);
  EXPECT_THAT(text, HasSubstr(stamp + "              \x1b[31m- service 2"));
  EXPECT_THAT(text, HasSubstr(stamp + "              \x1b[33m~ service 1"));
  EXPECT_THAT(text, HasSubstr(stamp + "              \x1b[32m+ service 3"));
  EXPECT_THAT(printedRaw(after, options),
              HasSubstr("\x1b[2mtransport stream 1, version 3, 2 services, unchanged\x1b[0m\n"));
  EXPECT_EQ(stamp + "\x1b[1;35mconfiguration requested\x1b[0m\n",
            printedRaw(ConfigurationRequest(), options));
}

TEST_F(NotificationTextTest, ColoursDoNotLetTheStreamsEscapeSequencesThrough) {
  Options options = inUtc();
  options.inColour = true;
  (void)printedRaw(NotifiedTable{Kind::kPmt, pmtRecord({})}, options);
  const PMT after = pmtRecord({test::streamRecord(4, 5, {test::languageDescriptor("\x1B[2")})});
  EXPECT_THAT(printedRaw(NotifiedTable{Kind::kPmt, after}, options),
              HasSubstr("\x1b[32m+ stream PID 5 (MPEG-2 audio): \xEF\xBF\xBD[2\x1b[0m\n"));
}

}  // namespace
}  // namespace tevra::tools
