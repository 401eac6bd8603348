#include "app/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include "tests/app/arguments.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::Eq;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;
using tevra::CommandLineOptions;
using tevra::test::Arguments;

const std::string kHelpOfTornel =
    "usage: tornel [ -spclvh ] \n"
    "Proceso de manipulaci\xC3\xB3n de DVB-SI\n"
    "Options:\n"
    "   [ -s ] [ --set ] (type=INTEGER, range=0...3, default=0)\n"
    "          Quorvane instance number. To get automatically working ports.\n"
    "   [ -p ] [ --port ] (type=INTEGER)\n"
    "          Thrift server listenning port number.\n"
    "   [ -c ] [ --console ] (type=FLAG)\n"
    "          Log to console. Default: not print to console.\n"
    "   [ -l ] [ --level ] (type=INTEGER, range=3...7, default=5)\n"
    "          Max log level value to print:\n"
    "           3 == ERROR\n"
    "           4 == WARNING\n"
    "           5 == NOTICE\n"
    "           6 == INFORMATION\n"
    "           7 == DEBUG\n"
    "   [ -v ] [ --version ] (type=FLAG)\n"
    "          Program version and exit.\n"
    "   [ -h ] [ --help ] (type=FLAG)\n"
    "          Display this help and exit.\n";

/** Parses "tornel" and then `options`. */
CommandLineOptions parse(std::initializer_list<const char*> options) {
  std::vector<const char*> all = {"tornel"};
  all.insert(all.end(), options.begin(), options.end());
  Arguments arguments(all);
  return tevra::parseCommandLine(arguments.count(), arguments.values());
}

/** The text that a range error raises, "" when the options are taken. */
std::string rangeError(std::initializer_list<const char*> options) {
  try {
    (void)parse(options);
    return "";
  } catch (const std::string& message) {
    return message;
  }
}

/** For a process that is about to end: shows a death test what it prints on standard output. */
void parseWithOutputOnStderr(std::initializer_list<const char*> options) {
  if (dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
    _exit(99);
  }
  (void)parse(options);
}

TEST(CommandLine, DefaultsAreMptsZeroLevelFiveAndNothingElse) {
  const CommandLineOptions options = parse({});
  EXPECT_EQ(0, options.set);
  EXPECT_EQ(0, options.port);
  EXPECT_FALSE(options.portGiven);
  EXPECT_FALSE(options.console);
  EXPECT_EQ(5, options.level);
  EXPECT_FALSE(options.version);
  EXPECT_FALSE(options.help);
  EXPECT_EQ("tornel", options.programName);
  EXPECT_EQ(1, options.firstOperand);
}

TEST(CommandLine, ProgramNameIsTheFirstArgumentAsItStands) {
  Arguments arguments{"/usr/bin/./tornel-of-slot-3"};
  const CommandLineOptions options = tevra::parseCommandLine(arguments.count(), arguments.values());
  EXPECT_EQ("/usr/bin/./tornel-of-slot-3", options.programName);
}

TEST(CommandLine, WithoutEvenAProgramNameTheDefaultsHold) {
  Arguments arguments(std::vector<const char*>{});
  const CommandLineOptions options = tevra::parseCommandLine(arguments.count(), arguments.values());
  EXPECT_EQ("", options.programName);
  EXPECT_EQ(0, options.set);
  EXPECT_EQ(5, options.level);
}

TEST(CommandLine, SetTakesEveryMptsIndexInAllItsForms) {
  EXPECT_EQ(0, parse({"-s", "0"}).set);
  EXPECT_EQ(1, parse({"-s1"}).set);
  EXPECT_EQ(2, parse({"--set", "2"}).set);
  EXPECT_EQ(3, parse({"--set=3"}).set);
}

TEST(CommandLine, LevelTakesThreeToSevenInAllItsForms) {
  EXPECT_EQ(3, parse({"-l", "3"}).level);
  EXPECT_EQ(4, parse({"-l4"}).level);
  EXPECT_EQ(6, parse({"--level", "6"}).level);
  EXPECT_EQ(7, parse({"--level=7"}).level);
}

TEST(CommandLine, ConsoleAndVersionAreFlags) {
  EXPECT_TRUE(parse({"-c"}).console);
  EXPECT_TRUE(parse({"--console"}).console);
  EXPECT_TRUE(parse({"-v"}).version);
  EXPECT_TRUE(parse({"--version"}).version);
  EXPECT_FALSE(parse({"-c"}).version);
  EXPECT_FALSE(parse({"-v"}).console);
}

TEST(CommandLine, FlagsMayBeJoinedAndTheLastOfTwoValuesWins) {
  const CommandLineOptions options = parse({"-cvl7", "-s", "1", "-s", "2"});
  EXPECT_TRUE(options.console);
  EXPECT_TRUE(options.version);
  EXPECT_EQ(7, options.level);
  EXPECT_EQ(2, options.set);
}

TEST(CommandLine, ShortPortTakesTheNextArgument) {
  const CommandLineOptions options = parse({"-p", "9999"});
  EXPECT_TRUE(options.portGiven);
  EXPECT_EQ(9999, options.port);
}

TEST(CommandLine, LongPortTakesItsValueAfterAnEqualsSign) {
  const CommandLineOptions options = parse({"--port=9"});
  EXPECT_TRUE(options.portGiven);
  EXPECT_EQ(9, options.port);
}

TEST(CommandLine, LongPortAloneSetsOnlyTheFlag) {
  const CommandLineOptions options = parse({"--port"});
  EXPECT_TRUE(options.portGiven);
  EXPECT_EQ(0, options.port);
}

TEST(CommandLine, LongPortLeavesTheNextArgumentAlone) {
  const CommandLineOptions options = parse({"--port", "9"});
  EXPECT_TRUE(options.portGiven);
  EXPECT_EQ(0, options.port);
  EXPECT_EQ(2, options.firstOperand);
}

TEST(CommandLine, EmptyPortValueIsZero) {
  const CommandLineOptions options = parse({"--port="});
  EXPECT_TRUE(options.portGiven);
  EXPECT_EQ(0, options.port);
}

TEST(CommandLine, PortHasNoRange) {
  EXPECT_EQ(-5, parse({"-p", "-5"}).port);
  EXPECT_EQ(123456, parse({"-p123456"}).port);
}

TEST(CommandLine, NumbersBeyondThirtyTwoBitsSaturate) {
  EXPECT_EQ(std::numeric_limits<int32_t>::max(), parse({"-p", "4294967296"}).port);
  EXPECT_EQ(std::numeric_limits<int32_t>::max(), parse({"-p", "99999999999999999999"}).port);
  EXPECT_EQ(std::numeric_limits<int32_t>::min(), parse({"-p", "-99999999999999999999"}).port);
}

TEST(CommandLine, TextThatIsNoNumberIsZero) {
  EXPECT_EQ(0, parse({"-s", "three"}).set);
  EXPECT_EQ(0, parse({"-s", ""}).set);
  EXPECT_EQ(0, parse({"--port=http"}).port);
}

TEST(CommandLine, NumbersAreDecimalAndEndAtTheFirstOtherCharacter) {
  EXPECT_EQ(2, parse({"-s", "2x"}).set);
  EXPECT_EQ(3, parse({"-s", " +3"}).set);
  EXPECT_EQ(0, parse({"-s", "0x3"}).set);
  EXPECT_EQ(1, parse({"-s", "01"}).set);
}

TEST(CommandLine, SetOutOfRangeRaisesItsMessage) {
  EXPECT_EQ("parameter range error: set must be >= 0", rangeError({"-s", "-1"}));
  EXPECT_EQ("parameter range error: set must be <= 3", rangeError({"-s", "4"}));
  EXPECT_EQ("parameter range error: set must be <= 3", rangeError({"--set=4294967296"}));
  EXPECT_EQ("parameter range error: set must be >= 0", rangeError({"--set=-4294967296"}));
}

TEST(CommandLine, LevelOutOfRangeRaisesItsMessage) {
  EXPECT_EQ("parameter range error: level must be >= 3", rangeError({"-l", "2"}));
  EXPECT_EQ("parameter range error: level must be <= 7", rangeError({"-l", "8"}));
  EXPECT_EQ("parameter range error: level must be >= 3", rangeError({"--level=-2147483648"}));
  EXPECT_EQ("parameter range error: level must be <= 7", rangeError({"--level=4294967301"}));
}

TEST(CommandLine, LevelThatIsNoNumberIsZeroAndSoOutOfRange) {
  EXPECT_EQ("parameter range error: level must be >= 3", rangeError({"-l", "debug"}));
}

TEST(CommandLine, OptionsAreLookedAtInTheirOrder) {
  EXPECT_EQ("parameter range error: set must be <= 3", rangeError({"-s", "4", "-l", "8"}));
  EXPECT_EQ("parameter range error: level must be <= 7", rangeError({"-l", "8", "-s", "4"}));
}

TEST(CommandLine, FirstOperandComesAfterTheOptionsWhereverItStood) {
  const CommandLineOptions options = parse({"operand", "-c", "-l", "7"});
  EXPECT_TRUE(options.console);
  EXPECT_EQ(7, options.level);
  EXPECT_EQ(4, options.firstOperand);
}

TEST(CommandLine, TwoDashesEndTheOptions) {
  const CommandLineOptions options = parse({"-c", "--", "-v"});
  EXPECT_TRUE(options.console);
  EXPECT_FALSE(options.version);
  EXPECT_EQ(3, options.firstOperand);
}

TEST(CommandLine, ParsingStartsAnewEveryTime) {
  EXPECT_EQ(2, parse({"-s", "2"}).set);
  EXPECT_EQ(2, parse({"-s", "2"}).set);
  EXPECT_EQ(0, parse({"-c"}).set);
}

TEST(CommandLine, HelpTextIsExact) {
  testing::internal::CaptureStdout();
  tevra::printHelp("tornel");
  EXPECT_EQ(kHelpOfTornel, testing::internal::GetCapturedStdout());
}

TEST(CommandLine, HelpNamesTheProgramAsItWasCalled) {
  testing::internal::CaptureStdout();
  tevra::printHelp("/opt/100%s");
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              testing::StartsWith("usage: /opt/100%s [ -spclvh ] \n"));
}

TEST(CommandLineDeathTest, HelpIsPrintedAndEndsTheProcessWithZero) {
  EXPECT_EXIT(parseWithOutputOnStderr({"-h"}), ExitedWithCode(0), Eq(kHelpOfTornel));
  EXPECT_EXIT(parseWithOutputOnStderr({"--help"}), ExitedWithCode(0), Eq(kHelpOfTornel));
}

TEST(CommandLineDeathTest, HelpGoesToStandardOutput) {
  EXPECT_EXIT((void)parse({"-h"}), ExitedWithCode(0), Eq(""));
}

TEST(CommandLineDeathTest, HelpAndVersionInAnyOrderGiveTheHelp) {
  EXPECT_EXIT(parseWithOutputOnStderr({"-v", "-h"}), ExitedWithCode(0), Eq(kHelpOfTornel));
  EXPECT_EXIT(parseWithOutputOnStderr({"-h", "-v"}), ExitedWithCode(0), Eq(kHelpOfTornel));
}

TEST(CommandLineDeathTest, HelpEndsTheProcessBeforeALaterRangeError) {
  EXPECT_EXIT(parseWithOutputOnStderr({"-h", "-s", "4"}), ExitedWithCode(0), Eq(kHelpOfTornel));
}

constexpr const char* kHint = "Try `tornel --help' for more information.\n";

TEST(CommandLineDeathTest, UnknownOptionGivesTheHintAndStatusOne) {
  EXPECT_EXIT((void)parse({"-x"}), ExitedWithCode(1), EndsWith(kHint));
  EXPECT_EXIT((void)parse({"--nonsense"}), ExitedWithCode(1), EndsWith(kHint));
  EXPECT_EXIT((void)parse({"-c", "-?"}), ExitedWithCode(1), EndsWith(kHint));
}

TEST(CommandLineDeathTest, HintNamesTheProgramAsItWasCalled) {
  Arguments arguments{"./my tornel", "-x"};
  EXPECT_EXIT((void)tevra::parseCommandLine(arguments.count(), arguments.values()),
              ExitedWithCode(1), EndsWith("Try `./my tornel --help' for more information.\n"));
}

TEST(CommandLineDeathTest, MissingArgumentGivesTheHintAndStatusOne) {
  EXPECT_EXIT((void)parse({"-p"}), ExitedWithCode(1), EndsWith(kHint));
  EXPECT_EXIT((void)parse({"-s"}), ExitedWithCode(1), EndsWith(kHint));
  EXPECT_EXIT((void)parse({"-l"}), ExitedWithCode(1), EndsWith(kHint));
  EXPECT_EXIT((void)parse({"--set"}), ExitedWithCode(1), EndsWith(kHint));
  EXPECT_EXIT((void)parse({"--level"}), ExitedWithCode(1), EndsWith(kHint));
}

TEST(CommandLineDeathTest, FlagWithAValueGivesTheHintAndStatusOne) {
  EXPECT_EXIT((void)parse({"--console=yes"}), ExitedWithCode(1), EndsWith(kHint));
}

TEST(CommandLineDeathTest, UsageErrorPrintsNoHelp) {
  EXPECT_EXIT(parseWithOutputOnStderr({"-x"}), ExitedWithCode(1),
              AllOf(EndsWith(kHint), Not(HasSubstr("usage:"))));
}

}  // namespace
