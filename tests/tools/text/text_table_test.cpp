#include <sstream>

#include <gtest/gtest.h>

#include "tools/outputs/pid_attributes.h"
#include "tools/text/dvb_time_text.h"
#include "tools/text/text_table.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

TEST(TextTable, AlignsColumnsByCharactersAndLeavesNoBlanksAtLineEnds) {
  TextTable table({"id", "name", ""});
  EXPECT_TRUE(table.empty());
  table.addRow({"1", "Télé", "x"});
  table.addRow({"1000", "T"});
  EXPECT_FALSE(table.empty());
  std::ostringstream out;
  table.print(out, 2);
  EXPECT_EQ("  id    name\n  1     Télé  x\n  1000  T\n", out.str());
}

TEST(TextTable, CountsInSingularAndPlural) {
  EXPECT_EQ("0 packets", counted(0, "packet"));
  EXPECT_EQ("1 packet", counted(1, "packet"));
  EXPECT_EQ("2 packets", counted(2, "packet"));
}

TEST(TextTable, WritesHexadecimalDigits) {
  EXPECT_EQ("0x4E", hex(0x4E, 2));
  EXPECT_EQ("0x004E", hex(0x4E, 4));
}

TEST(TextTable, KeepsATextOnItsLine) {
  EXPECT_EQ("a b  c \u00e9", oneLine("a\nb\r\tc\x7F\u00e9"));
  EXPECT_EQ("", oneLine(""));
}

TEST(DvbTimeText, WritesTheExampleOfTheStandard) {
  EXPECT_EQ("1993-10-13 12:45:00", dvbTimeText(0xC079124500));
}

TEST(DvbTimeText, WritesFirstAndLastDay) {
  EXPECT_EQ("1858-11-17 00:00:00", dvbTimeText(0));
  EXPECT_EQ("2038-04-22 23:59:59", dvbTimeText((int64_t{65535} << 24) | 0x235959));
}

TEST(DvbTimeText, WritesLeapDays) {
  EXPECT_EQ("2024-02-29 00:00:00", dvbTimeText(int64_t{60369} << 24));
  EXPECT_EQ("2024-03-01 00:00:00", dvbTimeText(int64_t{60370} << 24));
  EXPECT_EQ("1900-03-01 00:00:00", dvbTimeText(int64_t{15079} << 24));
}

TEST(DvbTimeText, LeavesDigitsThatAreNoneAsTheyAre) {
  EXPECT_EQ("1858-11-17 ff:ff:ff", dvbTimeText(0xFFFFFF));
}

TEST(PidAttributes, NamesTheBitsThatAreSet) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(Names{}, pidAttributeNames(0));
  EXPECT_EQ((Names{"PCR", "ES"}), pidAttributeNames(0x0C));
  EXPECT_EQ((Names{"PMT", "PCR", "ES", "ECM", "EMM"}), pidAttributeNames(-1));
}

}  // namespace
}  // namespace tevra::tools
