#pragma once

#include "records/records.h"
#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/** What the daemon's answer for the service `serviceId` says, without its bytes. */
[[nodiscard]] Output outputFacts(int serviceId, const SPTSConfiguration& configuration);

}  // namespace tevra::tools::report
