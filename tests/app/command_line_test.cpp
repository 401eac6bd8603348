#include "app/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
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

using Options = std::vector<const char*>;

/** Parses "tornel" and then `options`. */
CommandLineOptions parse(const Options& options) {
  Options all = {"tornel"};
  all.insert(all.end(), options.begin(), options.end());
  Arguments arguments(all);
  return tevra::parseCommandLine(arguments.count(), arguments.values());
}

/** The text that a range error raises, "" when the options are taken. */
std::string rangeError(const Options& options) {
  try {
    (void)parse(options);
    return "";
  } catch (const std::string& message) {
    return message;
  }
}

/** For a process that is about to end: shows a death test what it prints on standard output. */
void parseWithOutputOnStderr(const Options& options) {
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

TEST(CommandLine, PortTakesAnyNumberAndInItsLongFormOnlyAnAttachedOne) {
  struct Case {
    Options options;
    int32_t port;
    int firstOperand;
  };
  for (const Case& taken : std::vector<Case>{{{"-p", "9999"}, 9999, 3},
                                             {{"-p", "-5"}, -5, 3},
                                             {{"-p123456"}, 123456, 2},
                                             {{"-pabc"}, 0, 2},
                                             {{"--port=9"}, 9, 2},
                                             {{"--port="}, 0, 2},
                                             {{"--port"}, 0, 2},
                                             {{"--port", "9"}, 0, 2}}) {
    const CommandLineOptions options = parse(taken.options);
    EXPECT_TRUE(options.portGiven);
    EXPECT_EQ(taken.port, options.port);
    EXPECT_EQ(taken.firstOperand, options.firstOperand);
  }
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

TEST(CommandLine, AValueOutOfRangeRaisesItsMessage) {
  for (const char* set : {"-1", "-4294967296"}) {
    EXPECT_EQ("parameter range error: set must be >= 0", rangeError({"-s", set}));
  }
  for (const char* set : {"4", "99999999999", "4294967296"}) {
    EXPECT_EQ("parameter range error: set must be <= 3", rangeError({"--set", set}));
  }
  for (const char* level : {"2", "-1", "-2147483648", "debug", ""}) {
    EXPECT_EQ("parameter range error: level must be >= 3", rangeError({"-l", level}));
  }
  for (const char* level : {"8", "4294967301"}) {
    EXPECT_EQ("parameter range error: level must be <= 7", rangeError({"--level", level}));
  }
}

TEST(CommandLine, OptionsAreLookedAtInTheirOrder) {
  EXPECT_EQ("parameter range error: set must be <= 3", rangeError({"-s", "4", "-l", "8"}));
  EXPECT_EQ("parameter range error: level must be <= 7", rangeError({"-l", "8", "-s", "4"}));
  EXPECT_EQ("parameter range error: set must be <= 3", rangeError({"-s", "4", "-h"}));
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

TEST(CommandLine, HelpNamesTheProgramAsItWasCalled) {
  testing::internal::CaptureStdout();
  tevra::printHelp("/opt/100%s");
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              testing::StartsWith("usage: /opt/100%s [ -spclvh ] \n"));
}

TEST(CommandLineDeathTest, HelpIsPrintedOnStandardOutputWhateverElseIsAskedForAndEndsWithZero) {
  for (const auto& options :
       std::vector<Options>{{"-h"}, {"--help"}, {"-v", "-h"}, {"-h", "-v"}, {"-h", "-s", "4"}}) {
    EXPECT_EXIT(parseWithOutputOnStderr(options), ExitedWithCode(0), Eq(kHelpOfTornel));
    EXPECT_EXIT((void)parse(options), ExitedWithCode(0), Eq(""));
  }
}

constexpr const char* kHint = "Try `tornel --help' for more information.\n";

TEST(CommandLineDeathTest, AUsageErrorGivesTheHintAloneAndStatusOne) {
  for (const auto& options :
       std::vector<Options>{// Unknown options, also behind a known one, and a flag with a value.
                            {"-x"},
                            {"--nonsense"},
                            {"-c", "-?"},
                            {"-c", "-x"},
                            {"--console=yes"},
                            // Missing arguments.
                            {"-p"},
                            {"-s"},
                            {"-l"},
                            {"--set"},
                            {"--level"}}) {
    EXPECT_EXIT(parseWithOutputOnStderr(options), ExitedWithCode(1),
                AllOf(EndsWith(kHint), Not(HasSubstr("usage:"))));
  }
}

TEST(CommandLineDeathTest, HintNamesTheProgramAsItWasCalled) {
  Arguments arguments{"./my tornel", "-x"};
  EXPECT_EXIT((void)tevra::parseCommandLine(arguments.count(), arguments.values()),
              ExitedWithCode(1), EndsWith("Try `./my tornel --help' for more information.\n"));
}

}  // namespace
