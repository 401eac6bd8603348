#include "tools/report/page/report_page.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/report/report_samples.h"
#include "tools/report/page/report_json.h"

namespace tevra::tools::report {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kHostile = "</script><script>x()</script>\"'\x01\xE2\x80\xAE";

/** A report in which every text is hostile. */
Report hostileReport() {
  Report report = test::reportOf(2, 2);
  report.file = kHostile;
  report.networkName = kHostile;
  report.faults = {kHostile};
  for (Service& service : report.services) {
    service.name = service.provider = service.typeName = kHostile;
    service.events = test::eventsOf(2, 30);
    service.events[0].name = kHostile;
    service.output->name = kHostile;
    service.output->tables.resize(1);
    for (InputStream& stream : service.streams) {
      stream.description = kHostile;
      stream.languages = {kHostile};
    }
    for (OutputStream& stream : service.output->streams) {
      stream.description = kHostile;
      stream.languages = stream.attributes = {kHostile};
    }
  }
  for (InputStream& stream : report.others) {
    stream.description = kHostile;
  }
  report.tables.resize(1);
  return report;
}

size_t timesIn(const std::string& text, const std::string& part) {
  size_t times = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++times;
  }
  return times;
}

TEST(ReportPage, CallsStandardInputSo) {
  Report report = test::reportOf(2, 2);
  report.file = "-";
  EXPECT_THAT(reportPage(report), HasSubstr("<title>standard input</title>"));
  const auto json = nlohmann::json::parse(reportJson(report));
  EXPECT_EQ("standard input", json.at("title"));
  EXPECT_EQ("-", json.at("file"));
  EXPECT_THAT(reportPage(report), Not(HasSubstr("<p class=\"file\">")));
  report.title = "Head end";
  EXPECT_THAT(reportPage(report), HasSubstr("<p class=\"file\"><bdi>standard input</bdi>"));
}

TEST(ReportPage, LetsNoTextOfTheStreamBecomeMarkup) {
  for (const std::string& title : {std::string(), std::string(kHostile)}) {
    Report report = hostileReport();
    report.title = title;
    const std::string page = reportPage(report);
    EXPECT_EQ(1U, timesIn(page, "<script>"));
    EXPECT_EQ(1U, timesIn(page, "</script>"));
    EXPECT_THAT(page, Not(HasSubstr("\x01")));
    EXPECT_THAT(page, Not(HasSubstr("\xE2\x80\xAE")));
    EXPECT_THAT(page, HasSubstr("&lt;/script&gt;"));
  }
}

TEST(ReportPage, NamesNothingOutsideOfItself) {
  const std::string page = reportPage(test::reportOf(3, 3));
  EXPECT_THAT(page, AllOf(Not(HasSubstr("http:")), Not(HasSubstr("https:")), Not(HasSubstr("src=")),
                          Not(HasSubstr("url(")), Not(HasSubstr("@import"))));
  EXPECT_THAT(page, HasSubstr("default-src &#39;none&#39;"));
}

TEST(ReportPage, ClosesWhatItOpens) {
  const std::string page = reportPage(hostileReport());
  for (const char* name : {"html", "head", "body", "main", "section", "svg", "g", "table", "tbody",
                           "tr", "td", "dl", "ul", "li", "text", "title", "details", "div"}) {
    const std::string start = "<" + std::string(name);
    EXPECT_EQ(timesIn(page, start + " ") + timesIn(page, start + ">"),
              timesIn(page, "</" + std::string(name) + ">"))
        << name;
  }
}

TEST(ReportPage, IsTheSameForTheSameReport) {
  EXPECT_EQ(reportPage(test::reportOf(3, 3)), reportPage(test::reportOf(3, 3)));
}

TEST(ReportPage, IsHeadedByTheTitleOrTheFilesName) {
  Report report = test::reportOf(1, 1);
  report.file = "/some/where/file.ts";
  EXPECT_THAT(reportPage(report), AllOf(HasSubstr("<h1><bdi>file.ts</bdi>"),
                                        HasSubstr("<bdi>/some/where/file.ts</bdi>")));
  report.title = "Satellite 4, transponder 7";
  EXPECT_THAT(reportPage(report), HasSubstr("<h1><bdi>Satellite 4, transponder 7</bdi>"));
}

TEST(ReportPage, SaysSoWhenThereIsNothing) {
  EXPECT_THAT(
      reportPage(Report()),
      AllOf(HasSubstr("Neither PAT nor SDT of this stream lists a service."),
            HasSubstr("The EITs of this stream hold no event."), HasSubstr("unknown: no PCR"),
            HasSubstr("not in the stream"), HasSubstr("no TDT or TOT")));
}

TEST(ReportPage, PutsFaultsAtTheTop) {
  Report report = test::reportOf(1, 1);
  EXPECT_THAT(reportPage(report), HasSubstr("No fault seen"));
  report.pids[0].continuityErrors = 3;
  report.pids[0].scrambled = 1;
  report.pids[0x34].scrambled = 2;
  report.pids[0x34].transportErrors = 1;
  report.faults = {"1 section with a wrong CRC, dropped"};
  EXPECT_THAT(reportPage(report), AllOf(Not(HasSubstr("No fault seen")),
                                        HasSubstr("<li>3 continuity errors on 1 PID</li>"),
                                        HasSubstr("<li>3 scrambled packets on 2 PIDs</li>"),
                                        HasSubstr("<li>1 packet flagged as damaged</li>"),
                                        HasSubstr("<li>1 section with a wrong CRC, dropped</li>")));
}

TEST(ReportPage, WritesBitRatesOnlyWithAClock) {
  Report report = test::reportOf(1, 1);
  EXPECT_THAT(reportPage(report), Not(HasSubstr("bit/s</text>")));
  report.seconds = 1.0;
  EXPECT_THAT(reportPage(report), HasSubstr("150 kbit/s</text>")) << "100 packets in a second";
}

TEST(ReportPage, SaysWhereThePointerRestsWhatAPidIs) {
  Report report = test::reportOf(1, 1);
  Service& service = report.services[0];
  service.name.clear();
  service.streams[1].hasPcr = true;
  service.streams[1].languages = {"eng", "deu"};
  service.output->streams[3].attributes = {"ES", "PCR"};
  service.output->streams[4].inputPid.reset();
  report.pids[0x35].continuityErrors = 2;
  report.packets = 1000;
  EXPECT_THAT(reportPage(report),
              AllOf(HasSubstr("<title>Service 1\nservice 1\n30.0 %, 300 packets<"),
                    HasSubstr("<title>PID 53 (0x0035)\nstream, eng deu, carries the PCR\n"
                              "20.0 %, 200 packets\n2 continuity errors<"),
                    HasSubstr("<title>Output PID 101 (0x0065)\nstream, ES, PCR\n"
                              "from input PID 53 (0x0035)<"),
                    HasSubstr("<title>Output PID 17 (0x0011)\nmade by the daemon<"),
                    HasSubstr("\nEMM\nthe daemon does not know its input PID<"),
                    HasSubstr("<title>Input PID 53 to output PID 101\n20.0 %, 200 packets<"),
                    HasSubstr("<title>Input PID 52 to output PID 100\nrewritten by the daemon<")));
}

TEST(ReportPage, DrawsAPictureForEveryBandAndForEveryRowOfEvents) {
  Report report = test::reportOf(30, 8);
  report.services[0].events = test::eventsOf(48, 30);
  const std::string page = reportPage(report);
  EXPECT_EQ(1U + 1 + 31 + 8, timesIn(page, "<svg ")) << "summary, headings, bands, rows";
  EXPECT_EQ(8U, timesIn(page, "class=\"timeline\"")) << "a day in rows of three hours";
  EXPECT_EQ(2U, timesIn(page, "class=\"date\"")) << "from noon to noon";
}

TEST(ReportJson, HoldsEveryFactEvenOfHostileTexts) {
  Report report = hostileReport();
  report.services[0].name = "\xFF";
  report.seconds = 2.0;
  const auto json = nlohmann::json::parse(reportJson(report));
  EXPECT_EQ("\xEF\xBF\xBD", json.at("services").at(0).at("name"));
  EXPECT_EQ(kHostile, json.at("services").at(1).at("name"));
  EXPECT_EQ(6U, json.at("services").at(0).at("output").at("streams").size());
  EXPECT_EQ("2024-05-17 12:30:00", json.at("services").at(0).at("events").at(1).at("start"));
  EXPECT_EQ(1'000'000, json.at("pids").back().at("packets"));
  EXPECT_EQ(752'000'000.0, json.at("pids").back().at("bitRate"));
  EXPECT_TRUE(json.at("transportStreamId").is_null());
}

}  // namespace
}  // namespace tevra::tools::report
