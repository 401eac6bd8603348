#include "tests/system/tornelctl.h"

#include <utility>

namespace tevra::test {

Outcome runToEnd(const std::vector<std::string>& command) {
  ChildProcess process({command});
  const auto end = process.waitForEnd();
  Outcome outcome;
  outcome.exitStatus = end ? end->exitStatus : -1;
  outcome.out = process.standardOutput();
  outcome.err = process.standardError();
  return outcome;
}

Outcome tornelctl(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), tornelctlPath());
  return runToEnd(arguments);
}

std::string tornelctlPath() {
  return TORNEL_TORNELCTL;
}

std::string samplePath() {
  return TORNEL_SAMPLES_DIR "/sample.ts";
}

std::string capturePath(const std::string& name) {
  return TORNEL_CAPTURES_DIR "/" + name;
}

std::string ffprobePath() {
  return TORNEL_FFPROBE;
}

}  // namespace tevra::test
