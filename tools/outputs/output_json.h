#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "records/records.h"
#include "tools/text/json_text.h"

namespace tevra::tools {

/**
 * The answer to an output request as indented JSON, for programs: member names and their order do
 * not change.
 *
 *   { "<global service id>": {
 *       "pidItems": [
 *         { "inputPid": n, "outputPid": n, "attributes": n, "attributeNames": [ "PCR", "ES" ] } ],
 *       "outputTables": {
 *         "outputParam1": n, "outputParam2": n,
 *         "pat": { "transportStreamId", "version", "currentNext",
 *           "programs": [ { "programNumber", "pid" } ] },
 *         "sdt": { "tableId", "transportStreamId", "version", "currentNext", "originalNetworkId",
 *           "services": [ { "serviceId", "eitSchedule", "eitPresentFollowing", "runningStatus",
 *             "freeCA", "serviceType", "providerName", "serviceName", "descriptors" } ] },
 *         "pmt": { "programNumber", "version", "currentNext", "pcrPid", "descriptors",
 *           "esList": [ { "streamType", "pid", "languages": [ "eng" ], "descriptors" } ] },
 *         "patPackets", "sdtPackets", "pmtPackets", "otherPackets": [ "<376 digits>" ] } } }
 *
 * Names are the records' own; descriptors are [ { "tag": n, "data": "<hexadecimal digits>" } ].
 * serviceType, providerName and serviceName are read from the service descriptor, languages from
 * the ISO 639 descriptors. inputPid is 65535 where the daemon does not know it. Texts are UTF-8,
 * what is not becomes U+FFFD.
 */
[[nodiscard]] std::string outputJson(const std::map<int32_t, SPTSConfiguration>& answer);

/** The array "pidItems" of the above. */
[[nodiscard]] Json pidItemsJson(const std::vector<PIDItem>& items);

}  // namespace tevra::tools
