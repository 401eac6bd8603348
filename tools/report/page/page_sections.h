#pragma once

#include <string>

#include "tools/report/facts/report_data.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/** The head of the page: what the stream is, what is wrong with it, what its bits are spent on. */
void summarySection(const Report& report, const std::string& title, Markup& markup);

/**
 * The multiplex, drawn: services and PIDs on the left, outputs on the right, links between them.
 * What belongs to a service has its place in the report in `data-s`, so that it can be lit up.
 */
void multiplexSection(const Report& report, Markup& markup);

/** The checks of ETSI TR 101 290, and the intervals of tables and PCRs. */
void checksSection(const Report& report, Markup& markup);

/** The tables of the input with their versions, and those that the daemon makes of them. */
void tablesSection(const Report& report, Markup& markup);

/** The events of every service that has any, drawn and in words; last, which services have none. */
void scheduleSection(const Report& report, Markup& markup);

}  // namespace tevra::tools::report
