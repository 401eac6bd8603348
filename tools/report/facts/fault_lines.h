#pragma once

#include <string>
#include <vector>

#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/** What is wrong, a line each, for people: what packets show first, then the rest. */
[[nodiscard]] std::vector<std::string> faultLines(const Report& report);

}  // namespace tevra::tools::report
