#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools::test {

/** How descriptors, tags and payloads, are printed for people: one loop's lines, not indented. */
[[nodiscard]] std::string descriptorText(const std::vector<std::pair<int, Bytes>>& descriptors);

/** The same of one descriptor, whose text must start with "NAME (0xTAG)"; without that. */
[[nodiscard]] std::string payloadText(int tag, const Bytes& payload);

}  // namespace tevra::tools::test
