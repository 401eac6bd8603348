#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/** Draws the events of a service along the stream's own clock, and lists them below. */
void drawTimeline(const Service& service, std::optional<StreamTime> clock, Markup& markup);

}  // namespace tevra::tools::report
