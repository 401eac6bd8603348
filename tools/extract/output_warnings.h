#pragma once

#include <string>
#include <vector>

#include "tools/extract/spts_files.h"

namespace tevra::tools {

/**
 * What a receiver of a written output would miss, a line each: a PID for the PMT, a clock, the
 * packets of a stream, all or some, the key to scrambled ones, streams and languages that the
 * daemon does not carry. An output without any stream has no lines about those of its streams.
 */
[[nodiscard]] std::vector<std::string> outputWarnings(const SptsFile& file);

}  // namespace tevra::tools
