#include "tools/outputs/output_text.h"

#include <sstream>

#include <gtest/gtest.h>

#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

TEST(OutputText, ShowsPidsAndTablesToPeople) {
  std::ostringstream out;
  printOutput(out, 1201, test::sampleAnswer().at(1201));
  EXPECT_EQ(
      "output with global service id 1201, unique service id 77\n"
      "  PIDs\n"
      "    input PID  output PID  carries\n"
      "    256        501         PMT\n"
      "    512        502         PCR, ES\n"
      "    unknown    503         ES\n"
      "  PAT version 3, 1 packet, transport stream 9\n"
      "    programme 1201 on PID 501\n"
      "  SDT version 4, 1 packet, original network 65281\n"
      "    service 1201 \"Uno\", provider \"\", type 0x01\n"
      "  PMT version 5, 1 packet, programme 1201, PCR on PID 502\n"
      "    PID  stream        language  descriptors\n"
      "    502  MPEG-2 video\n"
      "    503  MPEG-2 audio  eng       0x0A\n",
      out.str());
}

TEST(OutputText, NamesStreamsByTheirContentsAndLanguagesByBothCodes) {
  SPTSConfiguration configuration;
  configuration.outputTables.dvbTables.pmt.esList = {
      test::streamRecord(0x06, 504,
                         {test::descriptorRecord(0x6A, "x"), test::languageDescriptor("fre"),
                          test::languageDescriptor("eng")})};
  std::ostringstream out;
  printOutput(out, 1, configuration);
  EXPECT_NE(std::string::npos, out.str().find("504  AC-3 audio  fre/fra+eng  0x6A 0x0A"))
      << out.str();
}

TEST(OutputText, TakesAnEmptyOutput) {
  std::ostringstream out;
  printOutput(out, 5, SPTSConfiguration());
  EXPECT_NE(std::string::npos, out.str().find("global service id 5"));
}

}  // namespace
}  // namespace tevra::tools
