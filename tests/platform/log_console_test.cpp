#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/module_utils.h"
#include "tests/platform/stderr_redirection.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tevra::test::StderrRedirection;

/** Two connected descriptors. */
struct Descriptors {
  ~Descriptors() {
    close(reader);
    closeWriter();
  }
  void closeWriter() {
    close(writer);
    writer = -1;
  }

  int reader = -1;
  int writer = -1;
};

/** Keeps every write apart from the next. */
struct DatagramPair : Descriptors {
  DatagramPair() {
    std::array<int, 2> both = {};
    if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, both.data()) != 0) {
      throw std::runtime_error("no socket pair");
    }
    reader = both[0];
    writer = both[1];
  }
};

struct Pipe : Descriptors {
  Pipe() {
    std::array<int, 2> both = {};
    if (pipe2(both.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    reader = both[0];
    writer = both[1];
  }

  /** Everything until nobody has the writing end any more. */
  [[nodiscard]] std::string readAll() const {
    std::string all;
    std::array<char, 4096> buffer;
    ssize_t length = 0;
    while ((length = read(reader, buffer.data(), buffer.size())) > 0) {
      all.append(buffer.data(), static_cast<size_t>(length));
    }
    return all;
  }
};

class Console : public testing::Test {
 protected:
  Console() { log_setup(kLogDebug, kLogWithConsole); }
  ~Console() override { log_setup(kLogNotice, kLogWithoutConsole); }

  /** Each write to standard error since the last call. */
  [[nodiscard]] std::vector<std::string> writes() const {
    std::vector<std::string> all;
    std::array<char, 65536> buffer;
    ssize_t length = 0;
    while ((length = recv(pair_.reader, buffer.data(), buffer.size(), MSG_DONTWAIT)) >= 0) {
      all.emplace_back(buffer.data(), static_cast<size_t>(length));
    }
    return all;
  }

 private:
  DatagramPair pair_;
  StderrRedirection redirection_{pair_.writer};
};

TEST_F(Console, TakesALineAsLevelAndMessage) {
  log_function(kLogWarning, nullptr, "Tornel %d started ...", 0);
  EXPECT_THAT(writes(), ElementsAre("4 Tornel 0 started ...\n"));
}

TEST_F(Console, TakesTheTagBetweenLevelAndMessage) {
  log_function(kLogDebug, "fltr", "message");
  EXPECT_THAT(writes(), ElementsAre("7 fltr message\n"));
}

TEST_F(Console, TakesNoBlankForAnEmptyTag) {
  log_function(kLogError, "", "message");
  EXPECT_THAT(writes(), ElementsAre("3 message\n"));
}

TEST_F(Console, TakesEachLineInOneWrite) {
  log_function(kLogError, "tag", "%s", std::string(50000, 'x').c_str());
  log_function(kLogError, nullptr, "second");
  EXPECT_THAT(writes(), ElementsAre("3 tag " + std::string(50000, 'x') + "\n", "3 second\n"));
}

TEST_F(Console, TakesAMessagesOwnNewlinesAsTheyAre) {
  log_function(kLogError, nullptr, "\nfirst\n\nsecond\n");
  EXPECT_THAT(writes(), ElementsAre("3 \nfirst\n\nsecond\n\n"));
}

TEST_F(Console, TakesAnEmptyMessage) {
  log_function(kLogError, nullptr, "%s", "");
  EXPECT_THAT(writes(), ElementsAre("3 \n"));
}

TEST_F(Console, TakesTheNumberOfALevelThatHasNoName) {
  log_setup(1000, kLogWithConsole);
  log_function(12, nullptr, "above");
  log_function(-3, nullptr, "below");
  EXPECT_THAT(writes(), ElementsAre("12 above\n", "-3 below\n"));
}

TEST_F(Console, TakesAZeroByteOfTheMessage) {
  log_function(kLogError, nullptr, "a%cb", '\0');
  EXPECT_THAT(writes(), ElementsAre(std::string("3 a\0b\n", 6)));
}

TEST_F(Console, TakesNothingAboveTheHighestLevel) {
  log_setup(kLogError, kLogWithConsole);
  log_function(kLogWarning, nullptr, "message");
  EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(Console, TakesNothingWithoutConsoleMode) {
  log_setup(kLogDebug, kLogWithoutConsole);
  log_function(kLogError, nullptr, "message");
  EXPECT_THAT(writes(), IsEmpty());
}

/** A message that is read only after `pause` comes whole. */
void expectWhole(Pipe& pipe, size_t length, std::chrono::milliseconds pause) {
  log_setup(kLogError, kLogWithConsole);
  const std::string message(length, 'x');
  std::thread writer([&] {
    const StderrRedirection redirection(pipe.writer);
    log_function(kLogError, nullptr, "%s", message.c_str());
    pipe.closeWriter();
  });
  std::this_thread::sleep_for(pause);
  const std::string all = pipe.readAll();
  writer.join();
  EXPECT_TRUE(all == "3 " + message + "\n") << all.size();
}

TEST(ConsoleDescriptor, TakesAMessageOfMegabytesWhole) {
  Pipe pipe;
  expectWhole(pipe, 3'000'000, {});
}

TEST(ConsoleDescriptor, MayBeNonBlockingAndSlow) {
  Pipe pipe;
  ASSERT_EQ(fcntl(pipe.writer, F_SETFL, O_NONBLOCK), 0);
  expectWhole(pipe, 300'000, std::chrono::milliseconds(50));  // Meanwhile the pipe is full.
}

TEST(ConsoleDescriptor, MayBeClosedOrFullWithoutHarm) {
  log_setup(kLogError, kLogWithConsole);
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  {
    const StderrRedirection redirection(full);
    log_function(kLogError, nullptr, "lost");
    close(STDERR_FILENO);
    log_function(kLogError, nullptr, "lost too");
  }
  close(full);
  DatagramPair pair;
  const StderrRedirection redirection(pair.writer);
  log_function(kLogError, nullptr, "seen");
  std::array<char, 64> buffer;
  const ssize_t length = recv(pair.reader, buffer.data(), buffer.size(), MSG_DONTWAIT);
  ASSERT_GT(length, 0);
  EXPECT_EQ(std::string(buffer.data(), static_cast<size_t>(length)), "3 seen\n");
}

TEST(ConsoleDescriptor, MayFailWithoutTheCallersErrnoChanging) {
  log_setup(kLogError, kLogWithConsole);
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  const StderrRedirection redirection(full);
  errno = EEXIST;
  log_function(kLogError, nullptr, "lost for %s", "want of space");
  EXPECT_EQ(errno, EEXIST);
  close(full);
}

TEST(ConsoleDescriptor, TakesTheLinesOfSeveralThreadsWithoutMixingThem) {
  constexpr int kThreads = 6;
  constexpr int kLines = 40;
  log_setup(kLogError, kLogWithConsole);
  Pipe pipe;
  std::thread writer([&] {
    const StderrRedirection redirection(pipe.writer);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([thread] {
        // Longer than a pipe takes at once (PIPE_BUF), so that only a lock keeps a line whole.
        const std::string filling(20'000, static_cast<char>('a' + thread));
        for (int line = 0; line < kLines; ++line) {
          log_function(kLogError, nullptr, "%d.%d %s", thread, line, filling.c_str());
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    pipe.closeWriter();
  });
  std::istringstream all(pipe.readAll());
  writer.join();
  std::multiset<std::string> seen;
  for (std::string line; std::getline(all, line);) {
    seen.insert(line);
  }
  std::multiset<std::string> expected;
  for (int thread = 0; thread < kThreads; ++thread) {
    for (int line = 0; line < kLines; ++line) {
      expected.insert("3 " + std::to_string(thread) + "." + std::to_string(line) + " " +
                      std::string(20'000, static_cast<char>('a' + thread)));
    }
  }
  EXPECT_TRUE(seen == expected) << seen.size() << " lines";
}

}  // namespace
