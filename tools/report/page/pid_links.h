#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/multiplex_layout.h"
#include "tools/report/page/svg.h"

namespace tevra::tools::report {

/** Draws what leads from PIDs of the input to those of the outputs; dashed where no packets do. */
void drawLinks(const Report& report, const MultiplexLayout& layout, Svg& svg);

}  // namespace tevra::tools::report
