#pragma once

#include <string>

#include "tools/report/facts/report_data.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/** The head of the page: what the stream is, what is wrong with it, what its bits are spent on. */
void summarySection(const Report& report, const std::string& title, Markup& markup);

}  // namespace tevra::tools::report
