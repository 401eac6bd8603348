#include "tools/listen/notification_json.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

using nlohmann::json;
using test::eitRecord;
using test::eventRecord;
using test::pmtRecord;
using test::sdtRecord;
using test::serviceRecord;
using test::timeAt;
using testing::HasSubstr;
using Kind = TableKind;

class NotificationJsonTest : public testing::Test {
 protected:
  std::string printedLine(const Notification::Content& content) {
    constexpr std::chrono::milliseconds kNow(750516310250);
    const auto* notified = std::get_if<NotifiedTable>(&content);
    return notificationJson({std::chrono::system_clock::time_point(kNow), content},
                            notified == nullptr ? TableNews() : history_.add(*notified),
                            Zone::kUtc);
  }

  json printed(const Notification::Content& content) {
    const std::string line = printedLine(content);
    EXPECT_EQ(0, std::count(line.begin(), line.end(), '\n')) << line;
    return json::parse(line);
  }
  json printed(Kind kind, const SiTable& table) { return printed(NotifiedTable{kind, table}); }

  /** The changes that `after` brings against `before`. */
  json changes(Kind kind, const SiTable& before, const SiTable& after) {
    (void)printed(kind, before);
    const json object = printed(kind, after);
    EXPECT_EQ("changed", object.at("state"));
    return object.at("changes");
  }

  TableHistory history_;
};

TEST_F(NotificationJsonTest, GivesTimeKindIdsVersionAndTable) {
  const json object = printed(Kind::kSdt, sdtRecord({serviceRecord(101, "Uno")}));
  EXPECT_EQ("1993-10-13T12:45:10.250Z", object.at("time"));
  EXPECT_EQ("SDT", object.at("kind"));
  EXPECT_EQ(json({{"tableId", 0x42}, {"transportStreamId", 1}, {"originalNetworkId", 2}}),
            object.at("ids"));
  EXPECT_EQ(3, object.at("version"));
  EXPECT_EQ("first", object.at("state"));
  EXPECT_EQ(json::array(), object.at("changes"));
  EXPECT_EQ("SDT", object.at("table").at("table"));
  EXPECT_EQ(101, object.at("table").at("services").at(0).at("serviceId"));
}

TEST_F(NotificationJsonTest, NamesEveryKindAsTheInterfaceDoes) {
  EXPECT_EQ(json({{"kind", "NIM"}, {"value", 7}, {"time", "1993-10-13T12:45:10.250Z"}}),
            printed(NimValue{7}));
  EXPECT_EQ("PAT", printed(Kind::kPat, PAT()).at("kind"));
  EXPECT_EQ("PMT", printed(Kind::kPmt, PMT()).at("kind"));
  EXPECT_EQ("NIT", printed(Kind::kNit, NIT()).at("kind"));
  EXPECT_EQ("BAT", printed(Kind::kBat, BAT()).at("kind"));
  EXPECT_EQ("CAT", printed(Kind::kCat, CAT()).at("kind"));
  EXPECT_EQ("EITPresentFollowing", printed(Kind::kEitPresentFollowing, EIT()).at("kind"));
  EXPECT_EQ("EITSchedule", printed(Kind::kEitSchedule, EIT()).at("kind"));
  const json request = printed(ConfigurationRequest());
  EXPECT_EQ("requestConfiguration", request.at("kind"));
  EXPECT_EQ(2U, request.size());
  const json tot = printed(Kind::kTot, TOT());
  EXPECT_EQ("TOT", tot.at("kind"));
  EXPECT_FALSE(tot.contains("version"));
}

TEST_F(NotificationJsonTest, ComparesTheClockOfATotWithTheMachinesAndTheLast) {
  const json first = printed(Kind::kTot, test::totRecord(timeAt(0x124500)));
  EXPECT_EQ(10, first.at("systemClockSeconds"));
  const json second = printed(Kind::kTot, test::totRecord(timeAt(0x124512)));
  EXPECT_EQ(-2, second.at("systemClockSeconds"));
  EXPECT_EQ(json::parse(R"([{"what": "utcTime", "change": "changed", "seconds": 12,
      "from": "1993-10-13 12:45:00 UTC", "to": "1993-10-13 12:45:12 UTC"}])"),
            second.at("changes"));
  EXPECT_FALSE(printed(Kind::kTot, test::totRecord(0xFFFFFFFFFF)).contains("systemClockSeconds"));
}

TEST_F(NotificationJsonTest, SaysThatATableIsUnchanged) {
  (void)printed(Kind::kPmt, pmtRecord({}));
  const json object = printed(Kind::kPmt, pmtRecord({}));
  EXPECT_EQ("unchanged", object.at("state"));
  EXPECT_EQ(json::array(), object.at("changes"));
}

TEST_F(NotificationJsonTest, GivesFieldsThatChangedWithBothValues) {
  SDT after = sdtRecord({serviceRecord(101, "Due")});
  after.version = 4;
  after.services[0].runningStatus = 1;
  EXPECT_EQ(json::parse(R"([
      {"what": "version", "change": "changed", "from": 3, "to": 4},
      {"what": "service.runningStatus", "id": 101, "change": "changed", "from": 4, "to": 1},
      {"what": "service.serviceName", "id": 101, "descriptor": "service_descriptor",
       "change": "changed", "from": "Uno", "to": "Due"}])"),
            changes(Kind::kSdt, sdtRecord({serviceRecord(101, "Uno")}), after));
}

TEST_F(NotificationJsonTest, GivesEntriesThatCameOrWentAsInTheTable) {
  const json list = changes(Kind::kSdt, sdtRecord({serviceRecord(1, "Uno")}),
                            sdtRecord({serviceRecord(2, "Due")}));
  ASSERT_EQ(2U, list.size());
  EXPECT_EQ("service", list[0].at("what"));
  EXPECT_EQ(1, list[0].at("id"));
  EXPECT_EQ("removed", list[0].at("change"));
  EXPECT_EQ(4, list[0].at("from").at("runningStatus"));
  EXPECT_FALSE(list[0].contains("to"));
  EXPECT_EQ("added", list[1].at("change"));
  EXPECT_EQ(2, list[1].at("to").at("serviceId"));
  EXPECT_EQ("Due", list[1].at("to").at("descriptors").at(0).at("fields").at("serviceName"));
  EXPECT_FALSE(list[1].contains("from"));
}

TEST_F(NotificationJsonTest, GivesDescriptorsThatCameOrWent) {
  PMT after = pmtRecord({test::streamRecord(4, 504, {test::languageDescriptor("spa")})});
  after.descriptors = {test::caDescriptor(0x0500, 600)};
  const json list = changes(Kind::kPmt, pmtRecord({test::streamRecord(4, 504)}), after);
  ASSERT_EQ(2U, list.size());
  EXPECT_EQ("descriptor", list[0].at("what"));
  EXPECT_EQ("CA_descriptor", list[0].at("descriptor"));
  EXPECT_EQ(0x0500, list[0].at("caSystemId"));
  EXPECT_EQ(600, list[0].at("to").at("fields").at("caPid"));
  EXPECT_EQ("stream.descriptor", list[1].at("what"));
  EXPECT_EQ(504, list[1].at("id"));
  EXPECT_EQ("added", list[1].at("change"));
  EXPECT_EQ("ISO_639_language_descriptor", list[1].at("to").at("name"));
}

TEST_F(NotificationJsonTest, GivesAllIdsOfEventsThatMovedEqually) {
  const auto schedule = [](int64_t first, int64_t second) {
    return eitRecord({eventRecord(7, timeAt(first), "A"), eventRecord(8, timeAt(second), "B")});
  };
  EXPECT_EQ(
      json::parse(R"([{"what": "event.startTime", "id": [7, 8], "change": "changed",
      "seconds": 5, "from": "1993-10-13 12:00:00 UTC", "to": "1993-10-13 12:00:05 UTC"}])"),
      changes(Kind::kEitSchedule, schedule(0x120000, 0x130000), schedule(0x120005, 0x130005)));
}

TEST_F(NotificationJsonTest, GivesTwoIdsAsAnObjectAndAnotherOrderWithoutAny) {
  NIT after;
  after.transportStreams.emplace_back().transportStreamId = 4;
  const json list = changes(Kind::kNit, NIT(), after);
  EXPECT_EQ(json({{"transportStreamId", 4}, {"originalNetworkId", 0}}), list.at(0).at("id"));
  EXPECT_EQ(json::parse(R"([{"what": "services", "change": "reordered"}])"),
            changes(Kind::kSdt, sdtRecord({serviceRecord(1, "A"), serviceRecord(2, "B")}),
                    sdtRecord({serviceRecord(2, "B"), serviceRecord(1, "A")})));
}

TEST_F(NotificationJsonTest, NeverCutsShort) {
  SDT after = sdtRecord({});
  for (int i = 0; i < 100; ++i) {
    after.services.push_back(serviceRecord(i, "X"));
  }
  EXPECT_EQ(100U, changes(Kind::kSdt, sdtRecord({}), after).size());
}

TEST_F(NotificationJsonTest, WritesNoControlByteAndNoInvalidUtf8) {
  const std::string line = printedLine(NotifiedTable{
      Kind::kPmt, pmtRecord({test::streamRecord(4, 5, {test::languageDescriptor("\x1B\xFF\n")})})});
  EXPECT_THAT(line, HasSubstr("\xEF\xBF\xBD"));
  for (const char c : line) {
    EXPECT_GE(static_cast<unsigned char>(c), 0x20) << line;
  }
}

}  // namespace
}  // namespace tevra::tools
