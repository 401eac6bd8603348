#include <gmock/gmock.h>

#include "tests/tools/report/report_samples.h"

namespace tevra::tools::report {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Service serviceWithoutPmt(int id, std::optional<int> pmtPid) {
  Service service;
  service.serviceId = id;
  service.pmtPid = pmtPid;
  return service;
}

TEST(FaultLines, AreNoneWhereNothingIsWrong) {
  EXPECT_THAT(test::reportOf(2, 3).faultLines(), IsEmpty());
}

TEST(FaultLines, BeginWithServicesWithoutAPmtAndWhy) {
  Report report;
  report.services = {serviceWithoutPmt(1, std::nullopt), serviceWithoutPmt(2, std::nullopt),
                     serviceWithoutPmt(3, 0x30), serviceWithoutPmt(4, 0x40)};
  report.pids[0x40].packets = 5;
  report.pids[0x50].continuityErrors = 2;
  report.faults = {"1 gap in the packets of tables"};
  EXPECT_THAT(report.faultLines(),
              ElementsAre("1 service without a PMT, none came on the PMT's PID: 4",
                          "2 services without a PMT, not in the PAT: 1, 2",
                          "1 service without a PMT, the PMT's PID has no packets: 3",
                          "2 continuity errors on 1 PID", "1 gap in the packets of tables"));
}

TEST(FaultLines, SayThatTheTransportStreamWasAnotherBefore) {
  Report report;
  report.transportStreamId = 3;
  for (const int id : {1, 2, 3}) {
    PAT pat;
    pat.transportStreamId = id;
    report.tables.push_back({pat});
  }
  EXPECT_THAT(report.faultLines(),
              ElementsAre("transport stream 3 came in the place of 1, 2: services and outputs are "
                          "those of the last alone"));
}

TEST(FaultLines, SayWhatWrongCrcsCost) {
  Report report;
  report.services = {serviceWithoutPmt(60, 60)};
  report.pids[60].packets = 8;
  report.pids[60].sections = 8;
  report.pids[60].crcErrors = 8;
  report.pids[18].sections = 20;
  report.pids[18].crcErrors = 3;
  report.pids[17].sections = 1;
  report.pids[17].crcErrors = 1;
  EXPECT_THAT(report.faultLines(),
              ElementsAre("SDT, BAT on PID 17: 1 section with a wrong CRC",
                          "EIT on PID 18: 3 of 20 sections with a wrong CRC",
                          "PMT of service 60 on PID 60: 8 sections, all with a wrong CRC"));
}

TEST(FaultLines, NameDeclaredStreamsWithoutAPacket) {
  Report report = test::reportOf(2, 3);
  report.pids.erase(report.services[1].streams[1].pid);
  report.pids.erase(report.services[1].streams[3].pid);
  EXPECT_THAT(report.faultLines(),
              ElementsAre("Service 2: 2 declared streams without a packet, PID 73, 75"));
}

TEST(FaultLines, NameFailedChecksThatNoOtherLineSays) {
  Report report;
  StreamCheck check;
  check.number = "1.3.a";
  check.name = "PAT_error_2";
  check.result = CheckResult::kFailed;
  check.count = 2;
  check.pids = {{0, 2, 0.6}};
  report.checks.push_back(check);
  check.number = "1.4";
  report.checks.push_back(check);
  check.number = "2.6";
  check.result = CheckResult::kNotMeasurable;
  report.checks.push_back(check);
  EXPECT_THAT(report.faultLines(),
              ElementsAre("PAT_error_2 (ETSI TR 101 290, 1.3.a): 2 times on 1 PID"));
}

}  // namespace
}  // namespace tevra::tools::report
