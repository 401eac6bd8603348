#pragma once

#include <string>

#include "records/control_service.h"
#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/** A report and what may have kept it from being whole. */
struct Collected {
  Report report;       ///< whole but for its title, which is the caller's
  size_t refused = 0;  ///< tables that the daemon said no to, and services it gave no output of
};

/**
 * Feeds the file to the daemon, asks it for the output of every service that has a PMT, under the
 * service's own name and ids, and reads the file a second time for its clock if it has PCRs.
 *
 * Raises ToolError when the file cannot be read, holds no transport stream or none of the tables.
 * Passes on what a call raises.
 */
[[nodiscard]] Collected collectReport(const std::string& file,
                                      thrift::in_module::im_SIControlSrvIf& daemon);

}  // namespace tevra::tools::report
