#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/tools/support/fake_daemon_server.h"

namespace tevra::tools::test {

/** What a run of the tool came to. */
struct Result {
  int status;
  std::string out;
  std::string err;
};

///@{
/** Runs the tool, in this process, with arguments behind its name. */
[[nodiscard]] Result run(const std::vector<std::string>& arguments);
[[nodiscard]] int run(const std::vector<std::string>& arguments, std::ostream& out,
                      std::ostream& err);
///@}

/** A test with a daemon that answers what it is told to. */
class WithFakeDaemon : public testing::Test {
 protected:
  /** Runs with the fake daemon's port behind the arguments. */
  [[nodiscard]] Result runWithDaemon(std::vector<std::string> arguments) const;

  /** What a command says first that feeds the daemon of its own accord. */
  [[nodiscard]] std::string replacing(const std::string& file) const;

  FakeDaemonServer server_;
};

}  // namespace tevra::tools::test
