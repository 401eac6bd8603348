#include "tools/cli/source_options.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/udp_sender.h"
#include "tools/cli/cli.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using std::chrono::milliseconds;
using test::Result;
using test::run;
using test::TemporaryFile;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kPort = 21047;
constexpr const char* kLive = "udp://127.0.0.1:21047";
constexpr int kNoPatience = 0;

std::string readOnce(ByteSource& source) {
  std::vector<uint8_t> buffer(4096);
  const size_t count = source.read(buffer.data(), buffer.size());
  return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count)};
}

/** A file of the test's own that is a pipe. */
void makePipe(const TemporaryFile& file) {
  ASSERT_EQ(0, mkfifo(file.path().c_str(), 0600));
}

/** While it lives no thread that is started is ended by an interruption, nor by a closed pipe. */
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t held{};
    sigemptyset(&held);
    sigaddset(&held, SIGINT);
    sigaddset(&held, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &held, &before_);
  }
  ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_{};
};

TEST(Source, EndsWhenItIsInterrupted) {
  for (const int signal : {SIGINT, SIGTERM}) {
    withSource({kLive, {}}, 30, [&](ByteSource& source) {
      kill(getpid(), signal);
      kill(getpid(), signal);  // a second one does no more
      EXPECT_EQ("", readOnce(source));
    });
  }
}

TEST(Source, ThatStaysAwayFailsBehindWhatHasBeenRead) {
  std::string read;
  const auto readToTheEnd = [&read](ByteSource& source) {
    test::sendDatagram("Gone", kPort);
    for (std::string more = readOnce(source); !more.empty(); more = readOnce(source)) {
      read += more;
    }
  };
  try {
    withSource({kLive, {}}, kNoPatience, readToTheEnd);
    ADD_FAILURE() << "no error";
  } catch (const ToolError& error) {
    EXPECT_STREQ("nothing more has come from udp://127.0.0.1:21047 for 0 s: has the stream ended?",
                 error.what());
  }
  EXPECT_EQ("Gone", read);
}

TEST(Source, ThatStaysAwayIsWaitedForByWhoIsToldOfIt) {
  const auto told = [](milliseconds /*silence*/) { test::sendDatagram("Gone", kPort); };
  withSource({kLive, {}}, told, [](ByteSource& source) { EXPECT_EQ("Gone", readOnce(source)); });
}

TEST(Source, ThatIsAPipeIsWaitedForHoweverLongItTakes) {
  const TemporaryFile file("pipe");
  makePipe(file);
  withSource({file.path(), {}}, kNoPatience, [&](ByteSource& source) {
    std::thread writer([&] {
      std::this_thread::sleep_for(milliseconds(300));
      std::ofstream(file.path()) << "Gone";
    });
    EXPECT_EQ("Gone", readOnce(source));
    writer.join();
  });
}

TEST(Source, ThatIsAPipeIntoWhichNothingCameIsNotTakenForAnotherFile) {
  const TemporaryFile file("pipe");
  makePipe(file);
  const SignalsHeld held;
  kill(getpid(), SIGINT);
  const Result result = run({"report", "--check", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: no packet came from " + file.path() + " before it was stopped\n",
            result.err);
}

/**
 * The sample in a pipe that is not closed while it lives. In the middle of a packet behind it this
 * process is interrupted.
 */
class InterruptedPipe {
 public:
  InterruptedPipe() {
    makePipe(file_);
    pipe_ = open(file_.path().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    writer_ = std::thread([this] { write(); });
  }
  ~InterruptedPipe() {
    done_ = true;
    writer_.join();
    close(pipe_);
  }
  InterruptedPipe(const InterruptedPipe&) = delete;
  InterruptedPipe& operator=(const InterruptedPipe&) = delete;

  [[nodiscard]] const std::string& path() const { return file_.path(); }

 private:
  void write() const {
    const std::string sample = test::contentOf(test::sample()) + "G, and no more of a packet";
    size_t written = 0;
    while (!done_ && written < sample.size()) {
      pollfd ready = {pipe_, POLLOUT, 0};
      (void)poll(&ready, 1, 10);
      const ssize_t count = ::write(pipe_, sample.data() + written, sample.size() - written);
      written += count > 0 ? static_cast<size_t>(count) : 0;
    }
    if (!done_) {
      kill(getpid(), SIGINT);
    }
  }

  const TemporaryFile file_{"pipe"};
  const SignalsHeld held_;
  int pipe_ = -1;
  std::atomic<bool> done_{false};
  std::thread writer_;
};

/** Commands with the sample on their standard input. */
class NamedInput : public test::WithFakeDaemon {
 protected:
  NamedInput() { server_.daemon().answer[101] = test::sampleAnswer().at(1201); }
  ~NamedInput() override {
    dup2(before_, STDIN_FILENO);
    close(before_);
  }

  static void give(const std::string& path = test::sample()) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    dup2(file, STDIN_FILENO);
    close(file);
  }

 private:
  const int before_ = dup(STDIN_FILENO);
};

TEST_F(NamedInput, IsStandardInputToWhatFeedsADaemon) {
  give();
  EXPECT_THAT(runWithDaemon({"feed", "-"}).out, StartsWith("standard input: 10013 packets"));
  give();
  EXPECT_THAT(runWithDaemon({"output", "--from", "-", "--daemon"}).err,
              StartsWith(replacing("standard input")));
}

TEST_F(NamedInput, IsStandardInputToWhatFindsNothingInIt) {
  give();
  EXPECT_THAT(run({"tables", "-", "--service", "9"}).err,
              StartsWith("tornelctl: standard input holds "));
  const TemporaryFile cut("ts");
  cut.write(test::contentOf(test::sample()).substr(0, size_t{188} * 13));
  give(cut.path());
  EXPECT_EQ("tornelctl: standard input ended while its tables were still waited for\n",
            run({"extract", "-", "--service", "101", "-o", "/dev/null"}).err);
}

TEST_F(NamedInput, IsStandardInputAsTheOutputIsStandardOutput) {
  const TemporaryFile cut("ts");
  cut.write(test::contentOf(test::sample()).substr(0, size_t{188} * 22));
  give(cut.path());
  testing::internal::CaptureStdout();
  const Result result = run({"extract", "-", "--service", "101", "-o", "-"});
  EXPECT_EQ('G', testing::internal::GetCapturedStdout()[0]);
  EXPECT_THAT(result.err, HasSubstr("input standard input: 22 packets"));
  EXPECT_THAT(result.err, HasSubstr("tornelctl: standard output: the input has no packet of "));
  EXPECT_THAT(result.err, HasSubstr("output standard output: "));
}

TEST_F(NamedInput, LeavesStandardOutputWithTablesAlone) {
  const TemporaryFile tables("ts");
  tables.write(test::contentOf(test::sample()));
  std::vector<TsPacket> packets = tables.readPackets();
  const auto isOfItsStreams = [](const TsPacket& packet) {
    return packet.pid() >= 257 && packet.pid() <= 260;
  };
  packets.erase(std::remove_if(packets.begin(), packets.end(), isOfItsStreams), packets.end());
  tables.write(packets);
  give(tables.path());
  testing::internal::CaptureStdout();
  const Result result = run({"extract", "-", "--service", "101", "-o", "-"});
  EXPECT_EQ('G', testing::internal::GetCapturedStdout()[0]);
  EXPECT_THAT(result.err, HasSubstr("tornelctl: standard output holds tables alone: "));
}

TEST(InterruptedCommands, PrintTheTablesThatCame) {
  const InterruptedPipe pipe;
  const Result result = run({"tables", pipe.path(), "--json"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_GT(nlohmann::json::parse(result.out).size(), 20U);
  EXPECT_THAT(result.err, testing::Not(HasSubstr("outside of packets"))) << "that was cut";
}

TEST(InterruptedCommands, DrawWhatCame) {
  const InterruptedPipe pipe;
  const TemporaryFile page("html");
  const Result result = run({"report", pipe.path(), "-o", page.path()});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_THAT(result.out, StartsWith("report " + page.path() + ": 4 services, "));
  EXPECT_THAT(page.read(), HasSubstr("Canal Uno"));
}

TEST(InterruptedCommands, MakeTheOutputsOfWhatCame) {
  const InterruptedPipe pipe;
  const Result result = run({"output", "--from", pipe.path()});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_THAT(result.out, HasSubstr("programme 101 "));
}

/** Interrupts this process as soon as something has been written for good. */
class InterruptingBuffer : public std::stringbuf {
 public:
  /** What that was. */
  [[nodiscard]] const std::string& first() const { return first_; }

 protected:
  int sync() override {
    if (first_.empty() && !str().empty()) {
      first_ = str();
      kill(getpid(), SIGINT);
    }
    return 0;
  }

 private:
  std::string first_;
};

TEST(InterruptedCommands, HavePrintedATableOfALiveStreamBeforeItsEnd) {
  const SignalsHeld held;
  std::atomic<bool> done{false};
  std::thread sender([&] { test::sendRepeatedly(test::sample(), kPort, done); });
  InterruptingBuffer buffer;
  std::ostream out(&buffer);
  std::ostringstream err;
  EXPECT_EQ(kExitDone, run({"tables", kLive, "--json", "--seconds", "5"}, out, err));
  done = true;
  sender.join();
  EXPECT_FALSE(nlohmann::json::accept(buffer.first())) << "there is more to come";
  EXPECT_TRUE(nlohmann::json::accept(buffer.str())) << buffer.str();
}

/** The packets behind headers of RTP, of which one in a hundred is lost on the way. */
void sendRtp(const std::string& packets, const std::atomic<bool>& done) {
  constexpr size_t kPayload = size_t{7} * 188;
  const size_t datagrams = packets.size() / kPayload;
  for (uint16_t sequence = 0; !done; ++sequence) {
    std::string datagram("\x80\x21..\0\0\0\0tnel", 12);
    datagram[2] = static_cast<char>(sequence >> 8);
    datagram[3] = static_cast<char>(sequence & 0xFF);
    if (sequence % 100 != 99) {
      test::sendDatagram(datagram + packets.substr(sequence % datagrams * kPayload, kPayload),
                         kPort);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(300));
  }
}

TEST(LiveCommands, ReadForAsLongAsTheyAreToldAndNameWhatWasLost) {
  const std::string packets = test::contentOf(test::sample());  // which takes an emulator a while
  std::atomic<bool> done{false};
  std::thread sender([&] { sendRtp(packets, done); });
  const Result result = run({"report", "--check", "rtp://127.0.0.1:21047", "--seconds", "1"});
  done = true;
  sender.join();
  EXPECT_EQ(kExitFailed, result.status) << "packets were lost";
  EXPECT_THAT(result.out, StartsWith("rtp://127.0.0.1:21047: "));
  EXPECT_THAT(result.out, HasSubstr("1.4 Continuity_count_error"));
  EXPECT_THAT(result.err, HasSubstr("on the way, by the sequence numbers of RTP"));
}

TEST(LiveCommands, SayThatALiveStreamHasToBeInterruptedWhereNoTimeIsGiven) {
  const SignalsHeld held;
  kill(getpid(), SIGINT);
  const Result result = run({"output", "--from", kLive});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, StartsWith("tornelctl: reading udp://127.0.0.1:21047 until interrupted; "
                                     "--seconds ends it by itself\n"
                                     "tornelctl: no packet came from udp://127.0.0.1:21047 in "));
}

}  // namespace
}  // namespace tevra::tools
