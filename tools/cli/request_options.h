#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/cli/command_line.h"
#include "tools/outputs/output_draft.h"

namespace tevra::tools {

/** What the command line says about outputs, before it is known to make sense. */
struct RequestOptions {
  std::optional<int32_t> service;        ///< --service, 0 to 65535
  OutputOptions output;                  ///< options of one value; the others' are not used
  std::optional<std::string> lastNode;   ///< --last-node, as parseLastNode takes it
  std::vector<std::string> audio;        ///< --audio: each as parseLanguages takes it, all count
  std::vector<std::string> listedNodes;  ///< --listed-node: each as parseListedNode takes it
  std::vector<std::string> outs;         ///< --out: each as parseOutArgument takes it
};

/** Where service, name and ids come from if they are not given; there is no fixed service. With
 * --from they are the stream's all the same. */
enum class OutputDefaults { kFixed, kFromStream };

/**
 * Declares the options; `defaults` decides what their help says. Parsing checks each for itself but
 * --out, and writes them to `options`, which must outlive `command`.
 */
void addRequestOptions(Command& command, RequestOptions& options, OutputDefaults defaults);

/**
 * The outputs that are asked for, at least one: that of each --out, or the one of the other
 * options, which also give what an --out does not say. Each has a service unless the stream may
 * give it. Raises UsageError when they make no sense alone or together.
 */
[[nodiscard]] std::vector<OutputDraft> draftsOf(const RequestOptions& options,
                                                OutputDefaults defaults);

}  // namespace tevra::tools
