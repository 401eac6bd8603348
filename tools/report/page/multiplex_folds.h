#pragma once

#include "tools/report/facts/report_data.h"
#include "tools/report/page/markup.h"

namespace tevra::tools::report {

/** What the picture leaves out: a service without an output and without a packet. */
[[nodiscard]] bool isEmpty(const Report& report, const Service& service);
/** And a PID that no table and no output refers to. */
[[nodiscard]] bool isStray(const Report& report, const InputStream& stream);

/** Both in words, folded: they need no picture, and may be many. */
void drawFolds(const Report& report, Markup& markup);

}  // namespace tevra::tools::report
