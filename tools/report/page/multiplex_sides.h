#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/multiplex_layout.h"
#include "tools/report/page/svg.h"

namespace tevra::tools::report {

/** Draws the card on the left: a service, which can be chosen, or the PIDs of none. */
void drawInput(const Report& report, const Band& band, double fullRate, Svg& svg);
/** Draws the card on the right; nothing for a band without an output. */
void drawOutput(const Report& report, const Band& band, Svg& svg);

}  // namespace tevra::tools::report
