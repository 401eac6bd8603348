#include "tests/control/control_server_fixture.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include "control/control_server.h"

namespace tevra::test {
namespace {

/** Its thread serves until the process ends. */
void startOnce() {
  static const ThreadedSimpleServer server = startControlServer(0);
  if (server.empty()) {
    throw std::logic_error("no control server");
  }
}

}  // namespace

bool waitForLine(int level, const std::string& beginning) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (std::chrono::steady_clock::now() < end) {
    for (const fake::LogLine& line : fake::logLines()) {
      if (line.level == level && line.text.rfind(beginning, 0) == 0) {
        return true;
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

ControlServerTest::ControlServerTest() {
  startOnce();
  fake::clearLog();
}

}  // namespace tevra::test
