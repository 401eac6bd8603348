#include "tools/cli/command_line.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include <gmock/gmock.h>

#include "tests/platform/scoped_environment.h"
#include "tests/tools/support/run_tornelctl.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using test::Result;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/** A command line whose one command has options of every kind. */
class CommandLineTest : public testing::Test {
 protected:
  CommandLineTest() {
    Command command = line_.command("do", "Does it");
    command.option("FILE", file_, "What to read").required();
    command.flag("--fast", fast_, "Hurry");
    command.option("-c,--count", count_, "How often").range(1, 9);
    command.option("--port", port_, "Where");
    command.option("--host", host_, "With whom");
    command.option("--speed", speed_, "How fast").oneOf({"slow", "quick"});
    command.option("--word", words_, "What to say").checked(faultOf, "WORD");
    command.option("--pair", pairs_, "What goes with what").called("A=B");
    command.list("--table", tables_, {"PAT", "PMT"}, "Only these").called("NAME");
    command.action([this](const Console& console) { return act(console); });
  }

  Result run(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv = {"tornelctl"};
    for (const std::string& argument : arguments) {
      argv.push_back(argument.c_str());
    }
    std::ostringstream out;
    std::ostringstream err;
    const int status = line_.run(static_cast<int>(argv.size()), argv.data(), {out, err});
    return {status, out.str(), err.str()};
  }

  static std::string faultOf(const std::string& word) {
    return word == "bad" ? "'bad' is no word" : "";
  }

  int act(const Console& console) const {
    if (fast_ && port_) {
      throw ArgumentError("--fast and --port exclude each other");
    }
    console.out << "did " << file_;
    return 7;
  }

  std::string file_;
  bool fast_ = false;
  int count_ = 3;
  std::optional<int> port_;
  std::string host_ = "here";
  std::optional<std::string> speed_;
  std::vector<std::string> words_;
  std::vector<std::string> pairs_;
  std::vector<std::string> tables_;
  CommandLine line_;
};

TEST_F(CommandLineTest, GivesTheActionWhatWasSaid) {
  const Result result =
      run({"do", "--fast", "a.ts", "-c", "9", "--host", "", "--speed", "quick", "--word", "a,b",
           "--word", "c", "--pair", "x=1", "--table", "pmt,Pat", "--table", "PMT"});
  EXPECT_EQ(7, result.status);
  EXPECT_EQ("did a.ts", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_TRUE(fast_);
  EXPECT_EQ(9, count_);
  EXPECT_EQ("", host_);
  EXPECT_EQ("quick", speed_);
  EXPECT_THAT(words_, ElementsAre("a,b", "c"));
  EXPECT_THAT(pairs_, ElementsAre("x=1"));
  EXPECT_THAT(tables_, ElementsAre("PMT", "PAT", "PMT"));
}

TEST_F(CommandLineTest, LeavesTheDefaultsOfWhatWasNotSaid) {
  EXPECT_EQ(7, run({"do", "a.ts"}).status);
  EXPECT_FALSE(fast_);
  EXPECT_EQ(3, count_);
  EXPECT_FALSE(port_.has_value());
  EXPECT_EQ("here", host_);
  EXPECT_FALSE(speed_.has_value());
  EXPECT_THAT(words_, IsEmpty());
}

TEST_F(CommandLineTest, TakesANumberWithLeadingZerosForADecimalOne) {
  EXPECT_EQ(7, run({"do", "a.ts", "-c", "08", "--port", "-010"}).status);
  EXPECT_EQ(8, count_);
  EXPECT_EQ(-10, port_);
  EXPECT_EQ(7, run({"do", "a.ts", "-c", "0x09", "--port", "0X7fffffff"}).status);
  EXPECT_EQ(9, count_);
  EXPECT_EQ(0x7FFFFFFF, port_);
}

TEST_F(CommandLineTest, ExplainsTheOptionsInTheirOrderWithTypesAndDefaults) {
  const Result result = run({"do", "--help"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ(
      "Does it\n"
      "Usage: tornelctl do [OPTIONS] FILE\n"
      "\n"
      "Arguments:\n"
      "  FILE TEXT REQUIRED          What to read\n"
      "\n"
      "Options:\n"
      "  -h,--help                   Print this help message and exit\n"
      "  --fast                      Hurry\n"
      "  -c,--count INT:1..9=3       How often\n"
      "  --port INT                  Where\n"
      "  --host TEXT=here            With whom\n"
      "  --speed TEXT:{slow,quick}   How fast\n"
      "  --word TEXT:WORD ...        What to say\n"
      "  --pair A=B ...              What goes with what\n"
      "  --table NAME                Only these\n"
      "\n"
      "Exit status: 0 done, 1 the daemon or the stream said no, 2 wrong usage.\n"
      "'tornelctl COMMAND --help' lists the options of a command.\n",
      result.out);
  const std::ostringstream out;
  EXPECT_EQ(result.out, line_.help("do", out));
  EXPECT_EQ(run({"--help"}).out, line_.help("", out));
  EXPECT_THROW((void)line_.help("undo", out), ArgumentError);
}

/** The longest line of the text. */
size_t widthOfText(const std::string& text) {
  std::istringstream lines(text);
  std::string line;
  size_t width = 0;
  while (std::getline(lines, line)) {
    width = std::max(width, line.size());
  }
  return width;
}

TEST_F(CommandLineTest, ExplainsInTheColumnsThatThereAre) {
  const std::string wide = run({"do", "--help"}).out;
  EXPECT_GT(widthOfText(wide), 40U);
  const tevra::test::ScopedEnvironment columns("COLUMNS", "40");
  const std::string narrow = run({"do", "--help"}).out;
  EXPECT_LE(widthOfText(narrow), 40U);
  EXPECT_THAT(narrow, HasSubstr("\n  --port INT\n      Where\n"));
  EXPECT_LE(widthOfText(run({"--help"}).out), 40U);
  const auto words = [](const std::string& text) {
    std::istringstream stream(text);
    return std::vector<std::string>(std::istream_iterator<std::string>(stream), {});
  };
  EXPECT_EQ(words(wide), words(narrow)) << "nothing is left out";
}

TEST_F(CommandLineTest, ExplainsAsEverWhereTheColumnsMakeNoSense) {
  const std::string wide = run({"do", "--help"}).out;
  for (const char* columns : {"", "0", "-1", "many"}) {
    const tevra::test::ScopedEnvironment variable("COLUMNS", columns);
    EXPECT_EQ(wide, run({"do", "--help"}).out) << columns;
  }
}

TEST_F(CommandLineTest, SaysOnOneLineWhatIsWrongAndWhereThereIsHelp) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{}, "FILE is required"},
      {{"a", "b"}, "there is no place for 'b'; see"},
      {{"a", "b", "c"}, "there is no place for 'b', 'c'; see"},
      {{"a", "--slow\nly"}, "--slow ly"},
      {{"a", "--sped", "slow"}, "there is no option '--sped' (did you mean '--speed'?); see"},
      {{"--tabel=PAT"}, "there is no option '--tabel=PAT' (did you mean '--table'?); see"},
      {{"a", "-c", "0"}, "--count: '0' is no whole number from 1 to 9"},
      {{"a", "-c", "10"}, "--count: '10' is no whole number from 1 to 9"},
      {{"a", "-c", "three"}, "--count: 'three' is no whole number from 1 to 9"},
      {{"a", "-c", ""}, "--count: '' is no whole number from 1 to 9"},
      {{"a", "--port", "x"}, "--port: 'x' is no whole number from -2147483648 to 2147483647"},
      {{"a", "--port", "2147483648"}, "--port: '2147483648' is no whole number from"},
      {{"a", "--port", "1", "--port", "2"}, "--port is given more than once; see"},
      {{"a", "--port"}, "--port needs a value; see"},
      {{"a", "--port", "1", "--port"}, "--port needs a value; see"},
      {{"a", "--speed", "Quick"}, "--speed: 'Quick' is none of slow, quick; see"},
      {{"a", "--word", "bad"}, "--word: 'bad' is no word"},
      {{"a", "--word", "b", "c"}, "c"},
      {{"a", "--table", "PAT,SDT"}, "--table: 'SDT' is none of PAT, PMT; see"},
      {{"a", "--table", ""}, "--table: '' is none of PAT, PMT; see"},
      {{"a", "--fast", "--port", "1"}, "--fast and --port exclude each other"},
  };
  for (const auto& [arguments, error] : wrong) {
    std::vector<std::string> all = {"do"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Result result = run(all);
    EXPECT_EQ(kExitUsage, result.status) << error;
    EXPECT_EQ("", result.out);
    EXPECT_THAT(result.err, AllOf(StartsWith("tornelctl: "), HasSubstr(error),
                                  EndsWith("; see tornelctl do --help\n")));
    EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n')) << result.err;
  }
}

TEST_F(CommandLineTest, WantsACommandThatThereIs) {
  EXPECT_EQ("tornelctl: a command is missing; see tornelctl --help\n", run({}).err);
  EXPECT_EQ(
      "tornelctl: there is no command or option 'od' (did you mean 'do'?); see tornelctl --help\n",
      run({"od"}).err);
  EXPECT_EQ(
      "tornelctl: there is no command or option '--hepl' (did you mean '--help'?); see tornelctl "
      "--help\n",
      run({"--hepl"}).err);
  EXPECT_EQ(
      "tornelctl: there is no option '--sped' (did you mean '--speed'?); see tornelctl do --help\n",
      run({"--sped", "do", "a"}).err);
  EXPECT_EQ("tornelctl: --port has its place behind 'do'; see tornelctl do --help\n",
            run({"--port=1", "do", "a"}).err);
  const Result result = run({"un\ndo"});
  EXPECT_EQ("tornelctl: there is no command or option 'un do'; see tornelctl --help\n", result.err);
  EXPECT_EQ(kExitUsage, result.status);
}

}  // namespace
}  // namespace tevra::tools
