#include "tools/text/terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "tests/platform/stderr_redirection.h"

namespace tevra::tools {
namespace {

/** A terminal of so many columns. */
class Terminal {
 public:
  explicit Terminal(unsigned short columns) : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
    const winsize size = {24, columns, 0, 0};
    if (grantpt(master_) != 0 || unlockpt(master_) != 0 || ioctl(master_, TIOCSWINSZ, &size) != 0) {
      throw std::runtime_error("no terminal");
    }
    slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
  }
  ~Terminal() {
    close(slave_);
    close(master_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  [[nodiscard]] int descriptor() const { return slave_; }
  [[nodiscard]] std::string shown() const {
    std::string text(1000, '\0');
    text.resize(static_cast<size_t>(std::max<ssize_t>(0, read(master_, text.data(), 1000))));
    return text;
  }

 private:
  int master_;
  int slave_ = -1;
};

TEST(Terminal, HasAWidthWhichAFileHasNot) {
  const Terminal narrow(40);
  const Terminal wide(132);
  {
    const tevra::test::StderrRedirection redirection(narrow.descriptor());
    EXPECT_EQ(40U, widthOf(std::cerr));
  }
  {
    const tevra::test::StderrRedirection redirection(wide.descriptor());
    EXPECT_EQ(132U, widthOf(std::cerr));
  }
  const int file = open("/dev/null", O_WRONLY | O_CLOEXEC);
  {
    const tevra::test::StderrRedirection redirection(file);
    EXPECT_EQ(0U, widthOf(std::cerr));
  }
  close(file);
  EXPECT_EQ(0U, widthOf(std::ostringstream()));
}

TEST(Message, IsOneLineOfUtf8) {
  std::ostringstream err;
  printMessage(err, "caf\xE9\nis no word, but caf\xC3\xA9 is");
  EXPECT_EQ("tornelctl: caf\xEF\xBF\xBD is no word, but caf\xC3\xA9 is\n", err.str());
}

TEST(Message, IsBrokenBetweenWordsOnANarrowTerminal) {
  const Terminal narrow(20);
  const tevra::test::StderrRedirection redirection(narrow.descriptor());
  printMessage(std::cerr, "there is no daemon: start it");
  EXPECT_EQ("tornelctl: there is\r\nno daemon: start it\r\n", narrow.shown());
}

}  // namespace
}  // namespace tevra::tools
