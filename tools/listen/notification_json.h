#pragma once

#include <string>

#include "tools/listen/notification.h"
#include "tools/listen/table_history.h"
#include "tools/text/time_stamp.h"

namespace tevra::tools {

/**
 * A notification as a JSON object on one line, for programs: member names and their order do not
 * change. `news` are of its table; without one they are as constructed.
 *
 *   { "time": "2026-11-21T20:41:07.123+01:00",
 *     "kind": "NIM", "PAT", "SDT", "PMT", "NIT", "TOT", "BAT", "CAT", "EITPresentFollowing",
 *       "EITSchedule" or "requestConfiguration",
 *     "value": n,                         of a NIM
 *     and of a table:
 *     "ids": { "tableId": n, "serviceId": n },  table_id and identifiers, which tell the table
 *       from others
 *     "version": n,                       not of a TOT
 *     "systemClockSeconds": n,            of a TOT: how far the machine's clock is ahead of it
 *     "state": "first", "changed" or "unchanged",
 *     "changes": [ { "what": "service.runningStatus", "id": 101, "change": "changed",
 *       "from": 4, "to": 1 } ],           against the last table of the same kind and ids
 *     "table": { ... } }                  as table_json.h says
 *
 * A change is "added", "removed", "changed" or "reordered". "what" is a field of the table
 * ("version"), a kind of entry ("service"), a field of one ("service.runningStatus"), or a
 * descriptor of either ("descriptor", "service.descriptor"), which "descriptor" then names, with
 * "caSystemId" of a CA descriptor; a value that stands in a descriptor is called like a field of
 * the entry ("service.serviceName"). "id" is the entry's, an object where it takes two, and an
 * array of those of several events that moved equally; "seconds" says by how much they did, or a
 * TOT's clock went on. "from" and "to" are values, entries or descriptors as in "table"; one is
 * missing of what was added or removed.
 */
[[nodiscard]] std::string notificationJson(const Notification& notification, const TableNews& news,
                                           Zone zone);

}  // namespace tevra::tools
