#pragma once

#include <string>

#include "records/records.h"

namespace tevra::tools {

/**
 * What a stream of a PMT is called wherever streams are listed: "AVC video", "teletext", and
 * "stream type 0xEE" where the type has no name. By stream type; a private PES stream by the
 * descriptor that tells its contents (EN 300 468, 6.1, table 12).
 */
[[nodiscard]] std::string streamName(const PMTES& stream);

}  // namespace tevra::tools
