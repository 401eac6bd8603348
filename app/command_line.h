#pragma once

#include <cstdint>
#include <string>

namespace tevra {

struct CommandLineOptions {
  int32_t set = 0;   ///< MPTS index, 0 to 3
  int32_t port = 0;  ///< parsed for the contract's sake, used by nothing
  bool portGiven = false;
  bool console = false;
  int32_t level = 5;  ///< highest log level printed, 3 to 7
  bool version = false;
  bool help = false;
  std::string programName;   ///< argv[0]
  int32_t firstOperand = 0;  ///< optind after parsing
};

/** Prints the help text on standard output. */
void printHelp(const std::string& programName);

/**
 * Parses the arguments through getopt_long.
 *
 * -h prints the help and ends the process with status 0; an unknown option or a missing argument
 * prints a hint on standard error and ends it with status 1. A number out of range raises a
 * std::string, which nothing catches: it ends the process abnormally, without a usage text, and
 * that is meant. Text that is no number counts as 0.
 */
[[nodiscard]] CommandLineOptions parseCommandLine(int argc, char** argv);

}  // namespace tevra
