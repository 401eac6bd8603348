#include "app/command_line.h"

#include <getopt.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tevra {
namespace {

constexpr int32_t kMinSet = 0;
constexpr int32_t kMaxSet = 3;
constexpr int32_t kMinLevel = 3;
constexpr int32_t kMaxLevel = 7;

constexpr const char* kShortOptions = "s:p:cl:vh";
constexpr std::array<option, 7> kLongOptions = {{
    {"set", required_argument, nullptr, 's'},
    {"port", optional_argument, nullptr, 'p'},
    {"console", no_argument, nullptr, 'c'},
    {"level", required_argument, nullptr, 'l'},
    {"version", no_argument, nullptr, 'v'},
    {"help", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
}};

constexpr const char* kHelp =
    " [ -spclvh ] \n"
    "Proceso de manipulación de DVB-SI\n"
    "Options:\n"
    "   [ -s ] [ --set ] (type=INTEGER, range=0...3, default=0)\n"
    "          Quorvane instance number. To get automatically working ports.\n"
    "   [ -p ] [ --port ] (type=INTEGER)\n"
    "          Thrift server listenning port number.\n"
    "   [ -c ] [ --console ] (type=FLAG)\n"
    "          Log to console. Default: not print to console.\n"
    "   [ -l ] [ --level ] (type=INTEGER, range=3...7, default=5)\n"
    "          Max log level value to print:\n"
    "           3 == ERROR\n"
    "           4 == WARNING\n"
    "           5 == NOTICE\n"
    "           6 == INFORMATION\n"
    "           7 == DEBUG\n"
    "   [ -v ] [ --version ] (type=FLAG)\n"
    "          Program version and exit.\n"
    "   [ -h ] [ --help ] (type=FLAG)\n"
    "          Display this help and exit.\n";

/** Base 10; 0 for text that is no number. Saturates, so that a huge number stays out of range on
 * every machine. */
int32_t numberFrom(const char* text) {
  const long value = std::strtol(text, nullptr, 10);
  return static_cast<int32_t>(std::clamp<long>(value, std::numeric_limits<int32_t>::min(),
                                               std::numeric_limits<int32_t>::max()));
}

int32_t setFrom(const char* text) {
  const int32_t set = numberFrom(text);
  if (set < kMinSet) {
    throw std::string("parameter range error: set must be >= 0");
  }
  if (set > kMaxSet) {
    throw std::string("parameter range error: set must be <= 3");
  }
  return set;
}

int32_t levelFrom(const char* text) {
  const int32_t level = numberFrom(text);
  if (level < kMinLevel) {
    throw std::string("parameter range error: level must be >= 3");
  }
  if (level > kMaxLevel) {
    throw std::string("parameter range error: level must be <= 7");
  }
  return level;
}

void takeOption(CommandLineOptions& options, int option, const char* argument) {
  switch (option) {
    case 's':
      options.set = setFrom(argument);
      break;
    case 'p':
      options.portGiven = true;
      if (argument != nullptr) {
        options.port = numberFrom(argument);
      }
      break;
    case 'c':
      options.console = true;
      break;
    case 'l':
      options.level = levelFrom(argument);
      break;
    case 'v':
      options.version = true;
      break;
    case 'h':
      options.help = true;
      printHelp(options.programName);
      std::exit(EXIT_SUCCESS);
    default:
      std::fprintf(stderr, "Try `%s --help' for more information.\n", options.programName.c_str());
      std::exit(EXIT_FAILURE);
  }
}

}  // namespace

void printHelp(const std::string& programName) {
  std::printf("usage: %s%s", programName.c_str(), kHelp);
}

CommandLineOptions parseCommandLine(int argc, char** argv) {
  optind = 0;
  CommandLineOptions options;
  options.programName = argc > 0 ? argv[0] : "";
  for (;;) {
    const int option = getopt_long(argc, argv, kShortOptions, kLongOptions.data(), nullptr);
    if (option == -1) {
      break;
    }
    takeOption(options, option, optarg);
  }
  options.firstOperand = optind;
  return options;
}

}  // namespace tevra
