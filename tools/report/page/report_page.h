#pragma once

#include <string>

#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/**
 * The report as one HTML page that needs nothing but itself. Every text of the stream is escaped;
 * the same report gives the same bytes.
 */
[[nodiscard]] std::string reportPage(const Report& report);

}  // namespace tevra::tools::report
