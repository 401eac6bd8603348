#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "records/control_service.h"
#include "tools/report/facts/report_data.h"
#include "tools/report/facts/stream_intervals.h"
#include "tools/stream/byte_source.h"

namespace tevra::tools::report {

/** A report and what may have kept it from being whole. */
struct Collected {
  Report report;       ///< whole but for its title, which is the caller's
  size_t refused = 0;  ///< tables that the daemon said no to, and services it gave no output of
};

/**
 * Feeds `source`, called `name`, to the daemon, which is then asked for the output of every service
 * that has a PMT, under the service's own name and ids. `pidPeriod` is that of the check 1.6, in
 * seconds.
 *
 * Raises ToolError when the source cannot be read, holds no transport stream or none of the tables.
 * Passes on what a call raises.
 */
[[nodiscard]] Collected collectReport(ByteSource& source, const std::string& name,
                                      thrift::in_module::im_SIControlSrvIf& daemon,
                                      int pidPeriod = kPidPeriod);

/** The checks of a stream alone. */
struct Verdict {
  std::string file;                 ///< as it was given
  uint64_t packets = 0;             ///< not 0
  std::optional<double> seconds;    ///< by the PCRs, more than 0; nothing without any
  std::vector<StreamCheck> checks;  ///< by their numbers
};

/**
 * The same without a daemon. Raises ToolError when the source cannot be read or holds no transport
 * stream.
 */
[[nodiscard]] Verdict checkStream(ByteSource& source, const std::string& name,
                                  int pidPeriod = kPidPeriod);

}  // namespace tevra::tools::report
