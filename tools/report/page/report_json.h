#pragma once

#include <string>

#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/**
 * The report as one JSON object, its members called as in report_data.h. An entry of "tables" has
 * "pid", "sections" (of an output "packets"), of the input's "times", and as "table" what
 * table_json.h says.
 */
[[nodiscard]] std::string reportJson(const Report& report);

}  // namespace tevra::tools::report
