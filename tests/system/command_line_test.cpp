#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/service_manager.h"

namespace tevra::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

using Arguments = std::vector<std::string>;

constexpr const char* kHelp =
    " [ -spclvh ] \n"
    "Proceso de manipulación de DVB-SI\n"
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

/** A command line and what a test calls it. */
struct NamedLine {
  const char* name;
  Arguments arguments;
};

std::string nameOfLine(const testing::TestParamInfo<NamedLine>& line) {
  return line.param.name;
}

void PrintTo(const NamedLine& line, std::ostream* out) {
  *out << testing::PrintToString(line.arguments);
}

class DaemonCommandLine : public testing::Test {
 protected:
  /** Runs the daemon until it ends by itself. */
  void run(const Arguments& arguments, const Environment& environment = {}) {
    const auto process = runDaemon(root_.path(), arguments, environment);
    const auto end = process->waitForEnd();
    ASSERT_TRUE(end) << "still runs, having written:\n" << process->standardError();
    end_ = *end;
    out_ = process->standardOutput();
    err_ = process->standardError();
  }

  TemporaryDirectory root_;
  ProcessEnd end_;
  std::string out_;
  std::string err_;
};

class DaemonOutOfRange : public DaemonCommandLine, public testing::WithParamInterface<NamedLine> {};

TEST_P(DaemonOutOfRange, AbortsWithoutUsageTextOrReason) {
  ASSERT_NO_FATAL_FAILURE(run(GetParam().arguments));
  EXPECT_EQ(end_.signal, SIGABRT);
  EXPECT_EQ(out_, "");
  EXPECT_THAT(err_, Not(HasSubstr("parameter range error")));
  EXPECT_THAT(err_, Not(HasSubstr("--help")));
}

INSTANTIATE_TEST_SUITE_P(Set, DaemonOutOfRange,
                         testing::Values(NamedLine{"Above", {"-s", "4"}},
                                         NamedLine{"LongAbove", {"--set=4"}},
                                         NamedLine{"Below", {"--set", "-1"}},
                                         NamedLine{"FarAbove", {"-s99999999999"}}),
                         nameOfLine);
INSTANTIATE_TEST_SUITE_P(Level, DaemonOutOfRange,
                         testing::Values(NamedLine{"Above", {"-l", "8"}},
                                         NamedLine{"Below", {"-l", "2"}},
                                         NamedLine{"Word", {"-l", "abc"}},
                                         NamedLine{"Negative", {"--level=-1"}},
                                         NamedLine{"Empty", {"--level", ""}}),
                         nameOfLine);

class DaemonUsageError : public DaemonCommandLine, public testing::WithParamInterface<NamedLine> {};

TEST_P(DaemonUsageError, EndsWithStatusOneAndAHint) {
  ASSERT_NO_FATAL_FAILURE(run(GetParam().arguments));
  EXPECT_EQ(end_.exitStatus, 1);
  EXPECT_EQ(out_, "");
  EXPECT_THAT(err_, EndsWith("Try `" + daemonPath() + " --help' for more information.\n"));
}

INSTANTIATE_TEST_SUITE_P(UnknownOption, DaemonUsageError,
                         testing::Values(NamedLine{"Short", {"-x"}}, NamedLine{"Long", {"--bogus"}},
                                         NamedLine{"ValueOfAFlag", {"--console=yes"}},
                                         NamedLine{"AfterAKnownOne", {"-c", "-x"}}),
                         nameOfLine);
INSTANTIATE_TEST_SUITE_P(MissingArgument, DaemonUsageError,
                         testing::Values(NamedLine{"Set", {"-s"}}, NamedLine{"Port", {"-p"}},
                                         NamedLine{"Level", {"-l"}},
                                         NamedLine{"LongSet", {"--set"}},
                                         NamedLine{"LongLevel", {"--level"}}),
                         nameOfLine);

TEST_F(DaemonCommandLine, VersionIsPrintedAlone) {
  for (const char* option : {"-v", "--version"}) {
    ASSERT_NO_FATAL_FAILURE(run({option}));
    EXPECT_EQ(end_.exitStatus, 0);
    EXPECT_EQ(out_, "0.9.1\n");
    EXPECT_EQ(err_, "");
  }
}

TEST_F(DaemonCommandLine, HelpIsPrintedOnStandardOutput) {
  for (const char* option : {"-h", "--help"}) {
    ASSERT_NO_FATAL_FAILURE(run({option}));
    EXPECT_EQ(end_.exitStatus, 0);
    EXPECT_EQ(out_, "usage: " + daemonPath() + kHelp);
    EXPECT_EQ(err_, "");
  }
}

TEST_F(DaemonCommandLine, HelpWinsOverVersionInEitherOrder) {
  for (const Arguments& arguments : {Arguments{"-v", "-h"}, Arguments{"-h", "-v"}}) {
    ASSERT_NO_FATAL_FAILURE(run(arguments));
    EXPECT_EQ(end_.exitStatus, 0);
    EXPECT_EQ(out_, "usage: " + daemonPath() + kHelp);
  }
}

TEST_F(DaemonCommandLine, ARangeErrorBeforeTheHelpAborts) {
  ASSERT_NO_FATAL_FAILURE(run({"-s", "4", "-h"}));
  EXPECT_EQ(end_.signal, SIGABRT);
  EXPECT_EQ(out_, "");
}

TEST_F(DaemonCommandLine, HelpBeforeARangeErrorIsPrinted) {
  ASSERT_NO_FATAL_FAILURE(run({"-h", "-s", "4"}));
  EXPECT_EQ(end_.exitStatus, 0);
  EXPECT_EQ(out_, "usage: " + daemonPath() + kHelp);
}

TEST_F(DaemonCommandLine, AnMptsThatTheModuleTypeDoesNotAllowEndsWithStatusZero) {
  const ServiceManager manager;
  ASSERT_NO_FATAL_FAILURE(run({"-s", "3", "-c", "-l", "7"},
                              {{"TEVRA_MODULE_TYPE", "6"}, {"NOTIFY_SOCKET", manager.path()}}));
  EXPECT_EQ(end_.exitStatus, 0);
  EXPECT_EQ(err_, "3 Tornel: MPTSid [3] not supported.\n");
  EXPECT_TRUE(manager.idle());  // neither started nor kicked
}

TEST_F(DaemonCommandLine, ModuleType0AllowsNoThirdMpts) {
  ASSERT_NO_FATAL_FAILURE(run({"--set=2", "--console"}, {{"TEVRA_MODULE_TYPE", "0"}}));
  EXPECT_EQ(end_.exitStatus, 0);
  EXPECT_EQ(err_, "3 Tornel: MPTSid [2] not supported.\n");
}

TEST_F(DaemonCommandLine, AnUnknownModuleTypeAllowsOnlyTheFirstMpts) {
  ASSERT_NO_FATAL_FAILURE(run({"-c", "-s", "1"}, {{"TEVRA_MODULE_TYPE", "9"}}));
  EXPECT_EQ(end_.exitStatus, 0);
  EXPECT_EQ(err_,
            "3 Tornel: Module type [9] not supported!\n"
            "3 Tornel: MPTSid [1] not supported.\n");
}

TEST_F(DaemonCommandLine, AnMptsThatIsNotServedLeavesNoTrace) {
  ASSERT_NO_FATAL_FAILURE(run({"-s", "3"}, {{"TEVRA_MODULE_TYPE", "6"}}));
  EXPECT_FALSE(isListening(kFirstControlPort + 3));
  EXPECT_TRUE(std::filesystem::is_empty(root_.path()));
}

TEST_F(DaemonCommandLine, APortInUseAborts) {
  const RawListener occupant(kFirstControlPort);
  ASSERT_NO_FATAL_FAILURE(run({"-c"}));
  EXPECT_EQ(end_.signal, SIGABRT);
  EXPECT_THAT(err_, HasSubstr("4 [MPTS0] Tornel listening on port [9224]\n"));
  EXPECT_THAT(err_, Not(HasSubstr("started ...")));
}

class DaemonPortOption : public DaemonCommandLine, public testing::WithParamInterface<NamedLine> {};

TEST_P(DaemonPortOption, HasNoInfluence) {
  DaemonSetup setup;
  setup.set = 3;
  setup.arguments = GetParam().arguments;
  const Daemon daemon(root_.path(), setup);
  EXPECT_EQ(timesIn(daemon.logLines(), "4 [MPTS3] Tornel listening on port [9227]"), 1);
  EXPECT_TRUE(isListening(9227));
  EXPECT_FALSE(isListening(9210));
  ControlClient client(3);
  EXPECT_TRUE(client->sendCmd(7));
}

INSTANTIATE_TEST_SUITE_P(Forms, DaemonPortOption,
                         testing::Values(NamedLine{"Absent", {}},
                                         NamedLine{"Short", {"-p", "9210"}},
                                         NamedLine{"Long", {"--port=9210"}},
                                         NamedLine{"LongWithoutValue", {"--port"}},
                                         NamedLine{"LongBeforeAnOperand", {"--port", "9210"}},
                                         NamedLine{"Word", {"-pabc"}}),
                         nameOfLine);

}  // namespace
}  // namespace tevra::test
