#pragma once

#include <string>
#include <vector>

#include "tests/system/child_process.h"

namespace tevra::test {

/** What a run of a program came to. */
struct Outcome {
  int exitStatus = -1;  ///< -1 when a signal ended it, or nothing did within kPatience
  std::string out;
  std::string err;
};

/** Runs a program until it ends by itself. */
[[nodiscard]] Outcome runToEnd(const std::vector<std::string>& command);

/** Runs the client tool. */
[[nodiscard]] Outcome tornelctl(std::vector<std::string> arguments);

/** Where the client tool lies. */
[[nodiscard]] std::string tornelctlPath();

/** The project's own multiplex. */
[[nodiscard]] std::string samplePath();

/** A recording that lies beside the project; need not be there. */
[[nodiscard]] std::string capturePath(const std::string& name);

/** Empty where ffprobe was not installed when the tests were configured. */
[[nodiscard]] std::string ffprobePath();

}  // namespace tevra::test
