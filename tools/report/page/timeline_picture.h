#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/**
 * Draws the events of a service, where it has any, along the stream's own clock. Every row of hours
 * is a picture of its own, so that a page of paper may end between any two.
 */
void drawTimeline(const Service& service, std::optional<StreamTime> clock, Markup& markup);

}  // namespace tevra::tools::report
