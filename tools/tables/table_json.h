#pragma once

#include <string>

#include "tools/tables/table_fields.h"
#include "tools/text/json_text.h"

namespace tevra::tools {

/**
 * A table as a JSON object, for programs: member names and their order do not change.
 *
 *   PAT { "table": "PAT", "tableId", "transportStreamId", "version", "currentNext",
 *         "programs": [ { "programNumber", "pid", "pidName": "PMT" } ] }
 *   CAT { "table", "tableId", "version", "currentNext", "descriptors" }
 *   PMT { "table", "tableId", "programNumber", "version", "currentNext", "pcrPid", "descriptors",
 *         "esList": [ { "pid", "streamType", "streamTypeName", "descriptors" } ] }
 *   NIT { "table", "tableId", "networkId", "version", "currentNext", "descriptors",
 *         "transportStreams": [ { "transportStreamId", "originalNetworkId", "descriptors" } ] }
 *   BAT as the NIT, with "bouquetId" for "networkId"
 *   SDT { "table", "tableId", "transportStreamId", "version", "currentNext", "originalNetworkId",
 *         "services": [ { "serviceId", "runningStatus", "runningStatusName", "eitSchedule",
 *           "eitPresentFollowing", "freeCA", "descriptors" } ] }
 *   EIT { "table", "tableId", "tableIdName", "serviceId", "version", "currentNext",
 *         "transportStreamId", "originalNetworkId", "lastTableId",
 *         "events": [ { "eventId", "startTime": "2024-05-17 12:45:00 UTC",
 *           "duration": "00:45:00", "runningStatus", "runningStatusName", "freeCA",
 *           "descriptors" } ] }
 *   TOT { "table", "tableId", "utcTime": "2024-05-17 12:59:55 UTC", "descriptors" }
 *
 * Descriptors are [ { "tag": n, "name": "service_descriptor", "data": "<hexadecimal digits>",
 * "fields": { ... } } ]. "fields" is missing where the descriptor's syntax is not known; where the
 * payload contradicts it, "problem" says how in its place. The fields' names and order are those of
 * the standard's syntax, their values:
 *
 *   number    a number: frequencies in Hz, rates in bit/s or symbols/s, orbital positions in tenths
 *             of a degree. Where the standard gives the value a name, it follows as "<field>Name",
 *             and is missing where it has none.
 *   flag      true or false
 *   text      UTF-8; what is not becomes U+FFFD
 *   bytes     hexadecimal digits
 *   loop      an array of objects
 */
[[nodiscard]] Json tableFieldsJson(const TableFields& table);

/** The same as an indented text. */
[[nodiscard]] std::string tableJson(const TableFields& table);

}  // namespace tevra::tools
