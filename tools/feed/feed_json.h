#pragma once

#include <string>

#include "tools/feed/stream_feed.h"

namespace tevra::tools {

/**
 * What was fed as indented JSON, for programs: member names and their order do not change.
 *
 *   { "source": "...", "packets": n, "tablesSent": n, "tablesRefused": n,
 *     "discontinuities": n, "crcErrors": n, "truncatedSections": n, "malformedSections": n,
 *     "tables": [ { "table": "PMT", "of": "service 101", "last": "version 4", "sections": n,
 *       "sent": n } ],
 *     "services": [ { "serviceId": n, "type": n, "name", "provider", "pmtPid": n or null,
 *       "hasPmt": true, "streams": n, "audioLanguages": [ "eng" ] } ] }
 *
 * Texts are UTF-8, what is not becomes U+FFFD.
 */
[[nodiscard]] std::string feedJson(const std::string& source, const StreamFeed& stream);

}  // namespace tevra::tools
