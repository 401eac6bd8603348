#include "tools/engine/private_engine.h"

#include <sys/resource.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include <gmock/gmock.h>

#include "im_SIControlSrv.h"
#include "platform/configuration_root.h"
#include "tests/platform/syslog_recorder.h"
#include "tests/platform/temporary_directory.h"
#include "tests/tools/support/temporary_file.h"
#include "tools/feed/stream_feed.h"
#include "tools/outputs/output_answers.h"
#include "tools/text/tool_error.h"

namespace {

int socketsAskedFor = 0;

}  // namespace

// The linker sends the program's calls of socket() here; the name is its own.
extern "C" int __wrap_socket(int /*domain*/, int /*type*/, int /*protocol*/) {  // NOLINT
  ++socketsAskedFor;
  errno = EACCES;
  return -1;
}

namespace tevra::tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tevra::test::TemporaryDirectory;
using Engine = thrift::in_module::im_SIControlSrvIf;

/** Feeds the sample and asks for service 101 under this name. */
SPTSConfiguration outputNamed(const std::string& name, const std::string& state = "") {
  OutputOptions output;
  output.inputSid = 101;
  output.name = name;
  OutputAnswers answers;
  withPrivateEngine(state, [&](Engine& engine) {
    (void)StreamFeed::feed(*openSource(test::sample()), "sample", engine);
    answers = askFor(engine, {output});
  });
  return answers.at(101);
}

std::vector<std::string> filesIn(const std::string& directory) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path().lexically_relative(directory));
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

/** With a configuration root as that of the machine's own task. */
class PrivateEngine : public testing::Test {
 protected:
  PrivateEngine() { setConfigurationRoot(machines_.path()); }

  const TemporaryDirectory machines_;
  const TemporaryDirectory state_;
};

TEST_F(PrivateEngine, GivesTheOutputsOfWhatItIsFed) {
  const SPTSConfiguration output = outputNamed("Uno");
  EXPECT_EQ(102, output.outputTables.dvbTables.pat.programs.at(0).pid) << "the pool's first";
  EXPECT_EQ(5U, output.pidItems.size());
  EXPECT_FALSE(output.outputTables.pmtPackets.empty());
}

TEST_F(PrivateEngine, OpensNoSocketLogsNothingAndTouchesNoFileOfTheMachine) {
  socketsAskedFor = 0;
  (void)tevra::test::takeSyslogLines();
  testing::internal::CaptureStderr();
  (void)outputNamed("Uno", state_.path());
  (void)outputNamed("Uno");
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ(0, socketsAskedFor);
  EXPECT_THAT(tevra::test::takeSyslogLines(), IsEmpty());
  EXPECT_THAT(filesIn(machines_.path()), IsEmpty());
}

TEST_F(PrivateEngine, BeginsAnewEveryTimeWithoutAStateDirectory) {
  const SPTSConfiguration first = outputNamed("Uno");
  const SPTSConfiguration second = outputNamed("Uno HD");
  EXPECT_TRUE(first.pidItems == second.pidItems);
  EXPECT_EQ(first.outputTables.dvbTables.sdt.version, second.outputTables.dvbTables.sdt.version);
}

TEST_F(PrivateEngine, GoesOnFromItsStateDirectory) {
  const SPTSConfiguration first = outputNamed("Uno", state_.path());
  EXPECT_THAT(filesIn(state_.path()), ElementsAre("PIDRemap0", "Tornel/EITTableVersionStoreFile0",
                                                  "Tornel/TableStoreFile0"));
  const SPTSConfiguration second = outputNamed("Uno HD", state_.path());
  EXPECT_TRUE(first.pidItems == second.pidItems);
  EXPECT_EQ(first.outputTables.dvbTables.sdt.version + 1,
            second.outputTables.dvbTables.sdt.version);
  EXPECT_TRUE(first.outputTables.dvbTables.pat == second.outputTables.dvbTables.pat);
  EXPECT_TRUE(first.outputTables.dvbTables.pmt == second.outputTables.dvbTables.pmt);
}

TEST_F(PrivateEngine, LeavesTheConfigurationRootAsItWasEvenWhenACallFails) {
  const auto fail = [](Engine& /*engine*/) { throw std::runtime_error("no more"); };
  EXPECT_THROW(withPrivateEngine("", fail), std::runtime_error);
  EXPECT_EQ(machines_.path(), configurationRoot());
}

/** No file may grow, as on a full disk, while it lives. */
class FullDisk {
 public:
  FullDisk() {
    (void)std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    rlimit none = before_;
    none.rlim_cur = 0;
    setrlimit(RLIMIT_FSIZE, &none);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    (void)std::signal(SIGXFSZ, SIG_DFL);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
};

TEST_F(PrivateEngine, FailsWhenItsStateCouldNotBeSaved) {
  (void)outputNamed("Uno", state_.path());
  std::string error;
  try {
    const FullDisk disk;
    (void)outputNamed("Uno HD", state_.path());
  } catch (const ToolError& failure) {
    error = failure.what();
  }
  EXPECT_EQ("cannot keep state in " + state_.path() +
                ": PIDs and versions could not be saved; is there room for them?",
            error);
}

}  // namespace
}  // namespace tevra::tools
