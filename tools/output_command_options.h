#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/output_request.h"

namespace tevra::tools {

/** What the command line says about an output, before it is known to make sense. */
struct OutputCommandOptions {
  std::optional<int32_t> service;
  OutputOptions output;
  std::vector<std::string> audio;
  std::vector<std::string> listedNodes;
};

/** Where service, name and ids come from if they are not given; there is no fixed service. */
enum class OutputDefaults { kFixed, kFromStream };

void addOutputOptions(CLI::App& command, OutputCommandOptions& options, OutputDefaults defaults);

/**
 * Reads the service, 0 if there is none, audio languages and listed nodes. Raises
 * CLI::ValidationError when options contradict each other.
 */
[[nodiscard]] OutputOptions finishOutputOptions(const OutputCommandOptions& options);

}  // namespace tevra::tools
