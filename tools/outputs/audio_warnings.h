#pragma once

#include <string>
#include <vector>

#include "tools/outputs/output_request.h"

namespace tevra::tools {

/**
 * What a filter by language did not do: a line for the wanted languages that no audio of `pmt` has,
 * with those that there are, and one for each audio stream that stays in another language, since
 * the filter looks at none of its type. Nothing without a filter. `side`, "input" or "output", is
 * whose PMT it is.
 */
[[nodiscard]] std::vector<std::string> audioWarnings(const AudioFilter& wanted, const PMT& pmt,
                                                     const std::string& side);

}  // namespace tevra::tools
