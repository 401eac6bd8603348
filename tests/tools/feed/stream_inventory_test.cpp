#include "tools/feed/stream_inventory.h"

#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

StreamInventory makeInventory() {
  SDT sdt = test::sdtRecord({test::serviceRecord(101, "Uno"), test::serviceRecord(103, "Radio")});
  sdt.services[1].descriptors = {test::serviceDescriptor(0x02, "Radio")};
  StreamInventory inventory;
  inventory.add(test::patRecord({{0, 16}, {102, 0x200}, {101, 0x100}}));
  inventory.add(sdt);
  inventory.add(
      test::pmtRecord({PMTES(), test::streamRecord(0x04, 600, {test::languageDescriptor("spa")}),
                       test::streamRecord(0x04, 601)}));
  inventory.add(TOT());
  return inventory;
}

TEST(StreamInventory, KnowsNothingOfAnEmptyStream) {
  const StreamInventory inventory;
  EXPECT_FALSE(inventory.transportStreamId().has_value());
  EXPECT_FALSE(inventory.originalNetworkId().has_value());
  EXPECT_TRUE(inventory.services().empty());
  EXPECT_FALSE(inventory.service(101).hasPmt);
  EXPECT_EQ(101, inventory.service(101).serviceId);
  EXPECT_EQ("none", inventory.servicesWithPmt());
  EXPECT_FALSE(inventory.firstServiceWithPmt().has_value());
  std::ostringstream out;
  inventory.print(out);
  EXPECT_EQ("", out.str());
}

TEST(StreamInventory, JoinsWhatPatSdtAndPmtSayOfAService) {
  const StreamInventory inventory = makeInventory();
  EXPECT_EQ(1, inventory.transportStreamId());
  EXPECT_EQ(2, inventory.originalNetworkId());
  const ServiceSummary service = inventory.service(101);
  EXPECT_EQ("Uno", service.name);
  EXPECT_EQ("Maker", service.provider);
  EXPECT_EQ(1, service.type);
  EXPECT_EQ(0x100, service.pmtPid);
  EXPECT_TRUE(service.hasPmt);
  EXPECT_EQ(3U, service.streams);
  EXPECT_EQ((std::vector<std::string>{"spa", "-"}), service.audioLanguages);
}

TEST(StreamInventory, KeepsTheLastSdtAndPmts) {
  const StreamInventory inventory = makeInventory();
  EXPECT_EQ(2U, inventory.sdt()->services.size());
  EXPECT_EQ(3U, inventory.pmt(101)->esList.size());
  EXPECT_EQ(nullptr, inventory.pmt(102));
  EXPECT_FALSE(StreamInventory().sdt().has_value());
}

TEST(StreamInventory, NamesTheCommonServiceTypes) {
  const std::map<char, std::string> names = {
      {0x00, "?"},        {0x01, "TV"},    {0x02, "radio"},   {0x0A, "radio (advanced codec)"},
      {0x11, "HD TV"},    {0x19, "HD TV"}, {0x1F, "HEVC TV"}, {0x16, "SD TV (advanced codec)"},
      {0x04, "type 0x04"}};
  for (const auto& [type, name] : names) {
    SDT sdt = test::sdtRecord({test::serviceRecord(101, "")});
    sdt.services[0].descriptors = {test::serviceDescriptor(type, "")};
    StreamInventory inventory;
    inventory.add(sdt);
    std::ostringstream out;
    inventory.print(out);
    EXPECT_NE(std::string::npos, out.str().find("  " + name)) << out.str();
  }
}

TEST(StreamInventory, ListsTheServicesOfPatAndSdtInOrder) {
  std::vector<int> ids;
  for (const ServiceSummary& service : makeInventory().services()) {
    ids.push_back(service.serviceId);
  }
  EXPECT_EQ((std::vector<int>{101, 102, 103}), ids);
  EXPECT_EQ("101 \"Uno\"", makeInventory().servicesWithPmt());
  EXPECT_EQ(101, makeInventory().firstServiceWithPmt());
}

TEST(StreamInventory, ForgetsThePmtOfAProgrammeThatLeftThePat) {
  StreamInventory inventory = makeInventory();
  inventory.add(test::patRecord({{102, 0x200}}));
  EXPECT_FALSE(inventory.service(101).hasPmt);
  EXPECT_EQ("none", inventory.servicesWithPmt());
}

TEST(StreamInventory, PrintsATableForPeople) {
  std::ostringstream out;
  makeInventory().print(out);
  EXPECT_EQ(
      "  service  name   provider  kind   PMT PID  streams  audio\n"
      "  101      Uno    Maker     TV     256      3        spa -\n"
      "  102                       ?      512      no PMT\n"
      "  103      Radio  Maker     radio  -        no PMT\n",
      out.str());
}

}  // namespace
}  // namespace tevra::tools
