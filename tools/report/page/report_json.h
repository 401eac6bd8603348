#pragma once

#include <string>

#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/** The report as one JSON object. */
[[nodiscard]] std::string reportJson(const Report& report);

}  // namespace tevra::tools::report
