#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/** The events of every service that has any, drawn and in words; last, which services have none. */
void scheduleSection(const Report& report, Markup& markup);

}  // namespace tevra::tools::report
