#include "tools/outputs/output_json.h"

#include <string>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/sample_answer.h"
#include "tools/tables/table_json.h"

namespace tevra::tools {
namespace {

using nlohmann::json;
using testing::ElementsAre;

TEST(OutputJson, IsAnEmptyObjectForAnEmptyAnswer) {
  EXPECT_EQ("{}", outputJson({}));
}

TEST(OutputJson, HoldsThePidItems) {
  const json entry = json::parse(outputJson(test::sampleAnswer())).at("1201");
  const json expected = json::parse(R"([
    {"inputPid": 256, "outputPid": 501, "attributes": 2, "attributeNames": ["PMT"]},
    {"inputPid": 512, "outputPid": 502, "attributes": 12, "attributeNames": ["PCR", "ES"]},
    {"inputPid": 65535, "outputPid": 503, "attributes": 8, "attributeNames": ["ES"]}])");
  EXPECT_EQ(expected, entry.at("pidItems"));
}

TEST(OutputJson, HoldsTheTablesAsTheTablesCommandPrintsThem) {
  const auto answer = test::sampleAnswer();
  const json tables = json::parse(outputJson(answer)).at("1201").at("outputTables");
  EXPECT_EQ(77, tables.at("outputParam1"));
  EXPECT_EQ(0, tables.at("outputParam2"));
  EXPECT_EQ(json::parse(tableJson(tableFields(answer.at(1201).outputTables.dvbTables.pat))),
            tables.at("pat"));
  EXPECT_EQ(json::parse(R"({"table": "SDT", "tableId": 66, "transportStreamId": 9, "version": 4,
    "currentNext": true, "originalNetworkId": 65281, "services": [{"serviceId": 1201,
      "runningStatus": 4, "runningStatusName": "running", "eitSchedule": false,
      "eitPresentFollowing": true, "freeCA": false, "descriptors": [{"tag": 72,
        "name": "service_descriptor", "data": "010003556e6f", "fields": {
          "serviceType": 1, "serviceTypeName": "digital television",
          "providerName": "", "serviceName": "Uno"}}]}]})"),
            tables.at("sdt"));
  EXPECT_EQ(json::parse(R"({"table": "PMT", "tableId": 2, "programNumber": 1201, "version": 5,
    "currentNext": true, "pcrPid": 502, "descriptors": [], "esList": [
      {"pid": 502, "streamType": 2, "streamTypeName": "MPEG-2 video", "descriptors": []},
      {"pid": 503, "streamType": 4, "streamTypeName": "MPEG-2 audio", "descriptors": [
        {"tag": 10, "name": "ISO_639_language_descriptor", "data": "656e6700", "fields": {
          "languages": [{"language": "eng", "audioType": 0, "audioTypeName": "undefined"}]}}]}]})"),
            tables.at("pmt"));
}

TEST(OutputJson, HoldsThePacketsAsHexadecimalDigits) {
  const json tables = json::parse(outputJson(test::sampleAnswer())).at("1201").at("outputTables");
  const std::string pat = tables.at("patPackets").at(0);
  EXPECT_EQ(376U, pat.size());
  EXPECT_EQ("474000100000b00d0009c7000004b1e1f5", pat.substr(0, 34));
  EXPECT_EQ(1U, tables.at("sdtPackets").size());
  EXPECT_EQ(1U, tables.at("pmtPackets").size());
  EXPECT_EQ(json::array(), tables.at("otherPackets"));
}

TEST(OutputJson, KeepsTheOrderOfItsMembers) {
  const auto entry = nlohmann::ordered_json::parse(outputJson(test::sampleAnswer())).at("1201");
  std::vector<std::string> members;
  for (const auto& member : entry.at("outputTables").items()) {
    members.push_back(member.key());
  }
  EXPECT_THAT(members, ElementsAre("outputParam1", "outputParam2", "pat", "sdt", "pmt",
                                   "patPackets", "sdtPackets", "pmtPackets", "otherPackets"));
}

TEST(OutputJson, TakesAnyBytesInTexts) {
  auto answer = test::sampleAnswer();
  auto& service = answer.at(1201).outputTables.dvbTables.sdt.services.at(0);
  service.descriptors.at(0).data = std::string("\x01\x01\xFF\x02\x15\xFF", 6);
  auto& stream = answer.at(1201).outputTables.dvbTables.pmt.esList.at(1);
  stream.descriptors.at(0).data = std::string("\xFF\xFE\x80\x00", 4);
  EXPECT_TRUE(json::accept(outputJson(answer)));
}

}  // namespace
}  // namespace tevra::tools
