#pragma once

#include <cstdint>
#include <map>

#include "records/records.h"

namespace tevra::tools::test {

/**
 * The answer for service 1201 "Uno" with a video and an English audio stream, tables and packets
 * complete.
 */
[[nodiscard]] std::map<int32_t, SPTSConfiguration> sampleAnswer();

}  // namespace tevra::tools::test
