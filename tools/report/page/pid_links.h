#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/multiplex_layout.h"
#include "tools/report/page/svg.h"

namespace tevra::tools::report {

/** Draws what leads from a PID of the input to one of an output; dashed where no packets do. */
void drawLink(const Report& report, const MultiplexLayout& layout, const Link& link, Svg& svg);

}  // namespace tevra::tools::report
