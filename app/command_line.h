#pragma once

#include <cstdint>
#include <string>

namespace tevra {

/** What the arguments say; the defaults are those of a call without any. */
struct CommandLineOptions {
  int32_t set = 0;           ///< MPTS index, 0 to 3
  int32_t port = 0;          ///< used by nothing: docs/contract.md, "Ports"
  bool portGiven = false;    ///< whether --port stood there
  bool console = false;      ///< log to standard error too
  int32_t level = 5;         ///< highest log level printed, 3 to 7
  bool version = false;      ///< print the version and end
  bool help = false;         ///< print the help and end: parseCommandLine does not return then
  std::string programName;   ///< argv[0]; empty when there is none
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
