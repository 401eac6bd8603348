#include "tools/notification_printer.h"

#include <sstream>

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

class NotificationPrinterTest : public testing::Test {
 protected:
  /** What has been printed since the last call. */
  std::string printed() {
    const std::string text = out_.str();
    out_.str("");
    return text;
  }

  std::ostringstream out_;
  NotificationPrinter printer_{out_};
};

TEST_F(NotificationPrinterTest, PrintsOneLinePerTable) {
  PAT pat;
  pat.transportStreamId = 4;
  pat.version = 6;
  pat.programs.resize(5);
  printer_.notifyPAT(pat);
  EXPECT_EQ("PAT           transport stream 4, version 6, 5 programmes\n", printed());

  SDT sdt;
  sdt.transportStreamId = 4;
  sdt.version = 1;
  sdt.services.resize(1);
  printer_.notifySDT(sdt);
  EXPECT_EQ("SDT           transport stream 4, version 1, 1 service\n", printed());

  PMT pmt;
  pmt.programNumber = 101;
  pmt.version = 2;
  pmt.pcrPid = 502;
  pmt.esList.resize(3);
  printer_.notifyPMT(pmt);
  EXPECT_EQ("PMT           service 101, version 2, 3 streams, PCR on PID 502\n", printed());

  CAT cat;
  cat.version = 3;
  cat.descriptors.resize(2);
  printer_.notifyCAT(cat);
  EXPECT_EQ("CAT           version 3, 2 descriptors\n", printed());

  TOT tot;
  tot.utcTime = 0xC079124500;
  printer_.notifyTOT(tot);
  EXPECT_EQ("TOT           1993-10-13 12:45:00 UTC, 0 descriptors\n", printed());
}

TEST_F(NotificationPrinterTest, PrintsOneLinePerEit) {
  EIT eit;
  eit.serviceId = 101;
  eit.tableId = 0x4E;
  eit.version = 7;
  eit.events.resize(2);
  printer_.notifyEITPresentFollowing(eit);
  EXPECT_EQ("EIT p/f       service 101, table 0x4E, version 7, 2 events\n", printed());
  eit.tableId = 0x50;
  printer_.notifyEITSchedule(eit);
  EXPECT_EQ("EIT schedule  service 101, table 0x50, version 7, 2 events\n", printed());
}

TEST_F(NotificationPrinterTest, PrintsNotificationsThatTheDaemonNeverSendsToo) {
  printer_.notifyNIM(12);
  EXPECT_EQ("NIM           value 12\n", printed());
  printer_.notifyNIT(NIT());
  EXPECT_EQ("NIT           network 0, version 0, 0 transport streams\n", printed());
  printer_.notifyBAT(BAT());
  EXPECT_EQ("BAT           bouquet 0, version 0, 0 transport streams\n", printed());
}

TEST_F(NotificationPrinterTest, PrintsTheStartUpRequest) {
  printer_.requestConfiguration();
  EXPECT_EQ("configuration requested\n", printed());
}

}  // namespace
}  // namespace tevra::tools
