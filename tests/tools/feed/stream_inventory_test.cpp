#include "tools/feed/stream_inventory.h"

#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

SDTService sdtService(int serviceId, const std::string& descriptor) {
  SDTService service;
  service.serviceId = serviceId;
  service.descriptors.emplace_back();
  service.descriptors[0].tag = 0x48;
  service.descriptors[0].data = descriptor;
  return service;
}

PATProgram program(int number, int pid) {
  PATProgram record;
  record.programNumber = number;
  record.pid = pid;
  return record;
}

PMTES audio(const std::string& language) {
  PMTES stream;
  stream.streamType = 0x04;
  if (!language.empty()) {
    stream.descriptors.emplace_back();
    stream.descriptors[0].tag = 0x0A;
    stream.descriptors[0].data = language + std::string(1, '\0');
  }
  return stream;
}

StreamInventory makeInventory() {
  PAT pat;
  pat.transportStreamId = 11;
  pat.programs = {program(0, 16), program(102, 0x200), program(101, 0x100)};
  SDT sdt;
  sdt.originalNetworkId = 22;
  sdt.services = {sdtService(101, "\x01\x02RT\x03Uno"), sdtService(103, "\x02\x02RT\x05Radio")};
  PMT pmt;
  pmt.programNumber = 101;
  pmt.esList = {PMTES(), audio("spa"), audio("")};
  StreamInventory inventory;
  inventory.add(pat);
  inventory.add(sdt);
  inventory.add(pmt);
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
  EXPECT_EQ(11, inventory.transportStreamId());
  EXPECT_EQ(22, inventory.originalNetworkId());
  const ServiceSummary service = inventory.service(101);
  EXPECT_EQ("Uno", service.name);
  EXPECT_EQ("RT", service.provider);
  EXPECT_EQ(1, service.type);
  EXPECT_EQ(0x100, service.pmtPid);
  EXPECT_TRUE(service.hasPmt);
  EXPECT_EQ(3U, service.streams);
  EXPECT_EQ((std::vector<std::string>{"spa", "-"}), service.audioLanguages);
}

TEST(StreamInventory, NamesTheCommonServiceTypes) {
  const std::map<char, std::string> names = {
      {0x00, "?"},        {0x01, "TV"},    {0x02, "radio"},   {0x0A, "radio (advanced codec)"},
      {0x11, "HD TV"},    {0x19, "HD TV"}, {0x1F, "HEVC TV"}, {0x16, "SD TV (advanced codec)"},
      {0x04, "type 0x04"}};
  for (const auto& [type, name] : names) {
    SDT sdt;
    sdt.services = {sdtService(101, std::string(1, type) + std::string(2, '\0'))};
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
  PAT pat;
  pat.programs = {program(102, 0x200)};
  inventory.add(pat);
  EXPECT_FALSE(inventory.service(101).hasPmt);
  EXPECT_EQ("none", inventory.servicesWithPmt());
}

TEST(StreamInventory, PrintsATableForPeople) {
  std::ostringstream out;
  makeInventory().print(out);
  EXPECT_EQ(
      "  service  name   provider  kind   PMT PID  streams  audio\n"
      "  101      Uno    RT        TV     256      3        spa -\n"
      "  102                       ?      512      no PMT\n"
      "  103      Radio  RT        radio  -        no PMT\n",
      out.str());
}

}  // namespace
}  // namespace tevra::tools
