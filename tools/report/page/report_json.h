#pragma once

#include <string>

#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/**
 * The report as one JSON object, for programs: member names and their order do not change.
 * report_data.h says what they mean, of some under another name. What is not known is null; lengths
 * of time are in seconds, a moment is "2024-05-17 12:59:55", in UTC.
 *
 *   { "file", "title", "packets", "seconds", "bitRate", "transportStreamId", "originalNetworkId",
 *     "networkId", "networkName", "firstClock", "lastClock", "tablesSent",
 *     "faults": [ all lines at the top of the page ],
 *     "kinds": [ { "kind": "video", "packets", "share": 0 to 1, "bitRate" } ],
 *     "pids": [ { "pid", "packets", "share", "bitRate", "continuityErrors", "scrambledPackets",
 *       "damagedPackets", "pcrs", "pcrJumps", "widestPcrStep", "sections", "crcErrors",
 *       "damagedSections" } ],
 *     "services": [ { "serviceId", "type", "name", "provider", "pmtPid", "hasPmt", "packets",
 *       "share", "bitRate", "streams": as "others",
 *       "output": { "serviceId", "name", "transportStreamId", "originalNetworkId",
 *         "streams": [ { "inputPid", "outputPid", "kind", "description", "languages", "attributes",
 *           "made" } ],
 *         "tables": [ { "pid", "packets", "table" } ], "intervals": as below },
 *       "events": [ { "eventId", "start", "seconds", "name", "scheduled", "present",
 *         "following" } ],
 *       "eventsWithoutTime" } ],
 *     "others": [ { "pid", "kind", "description", "languages", "hasPcr" } ],
 *     "tables": [ { "pid", "sections", "times", "arrivals", "table": as table_json.h says } ],
 *     "checks": [ { "priority", "clause", "number", "name", "limit",
 *       "result": "passed", "failed" or "not measurable", "reason", "count", "worst",
 *       "pids": [ { "pid", "count", "worst" } ] } ],
 *     "intervals": [ { "what", "pid", "serviceIds", "count", "min", "mean", "max" } ] }
 */
[[nodiscard]] std::string reportJson(const Report& report);

}  // namespace tevra::tools::report
