#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/** The tables of the input with their versions, and those that the daemon makes of them. */
void tablesSection(const Report& report, Markup& markup);

}  // namespace tevra::tools::report
