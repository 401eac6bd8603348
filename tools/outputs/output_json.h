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
 *         "pat", "sdt", "pmt": { ... },
 *         "patPackets", "sdtPackets", "pmtPackets", "otherPackets": [ "<376 digits>" ] } } }
 *
 * The tables are as table_json.h says, packets in hexadecimal digits. inputPid is 65535 where the
 * daemon does not know it.
 */
[[nodiscard]] std::string outputJson(const std::map<int32_t, SPTSConfiguration>& answer);

/** The array "pidItems" of the above. */
[[nodiscard]] Json pidItemsJson(const std::vector<PIDItem>& items);

}  // namespace tevra::tools
