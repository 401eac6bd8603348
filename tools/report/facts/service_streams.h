#pragma once

#include <map>
#include <vector>

#include "records/records.h"
#include "tools/report/facts/report_data.h"
#include "tools/report/facts/table_journal.h"

namespace tevra::tools::report {

/**
 * The PIDs that a PMT makes a service of: the PMT itself, elementary streams in its order, a PCR
 * PID of its own, ECMs. Each PID once.
 */
[[nodiscard]] std::vector<InputStream> serviceStreams(int pmtPid, const PMT& pmt);

/**
 * The PIDs of no service: those in `pids` that no service of `services` shows, and the EMM PIDs
 * that the CAT names. By kind, then by PID.
 */
[[nodiscard]] std::vector<InputStream> otherStreams(const std::map<int, PidCount>& pids,
                                                    const std::vector<Service>& services,
                                                    const TableJournal& journal);

}  // namespace tevra::tools::report
