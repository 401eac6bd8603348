#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/output_draft.h"

namespace tevra::tools {

/** What the command line says about outputs, before it is known to make sense. */
struct OutputCommandOptions {
  std::optional<int32_t> service;
  OutputOptions output;
  std::vector<std::string> audio;
  std::vector<std::string> listedNodes;
  std::vector<std::string> outs;
  std::optional<std::string> request;
};

/** Where service, name and ids come from if they are not given; there is no fixed service. */
enum class OutputDefaults { kFixed, kFromStream };

void addOutputOptions(CLI::App& command, OutputCommandOptions& options, OutputDefaults defaults);

/**
 * The outputs that are asked for, at least one: those of --request, which is read, or of each
 * --out, or the one of the other options, which also give what neither says. Each has a service
 * unless the stream may give it. Raises UsageError when they make no sense alone or together,
 * ToolError when the request cannot be read.
 */
[[nodiscard]] std::vector<OutputDraft> finishOutputOptions(const OutputCommandOptions& options,
                                                           OutputDefaults defaults);

}  // namespace tevra::tools
