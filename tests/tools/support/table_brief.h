#pragma once

#include <string>
#include <variant>
#include <vector>

#include "tools/si/si_table.h"

namespace tevra::tools::test {

/** A table in a few words: kind, id and version, such as "PMT 101 v3" or "EIT 101/0x4E v1". */
[[nodiscard]] std::string brief(const SiTable& table);

/** All tables of a stream, in brief. */
using Briefs = std::vector<std::string>;

}  // namespace tevra::tools::test
