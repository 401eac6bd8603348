#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/**
 * Draws the multiplex: services and PIDs on the left, outputs on the right, links between them.
 * What belongs to a service has its place in the report in `data-s`, so that it can be lit up.
 */
void drawMultiplex(const Report& report, Markup& markup);

}  // namespace tevra::tools::report
