#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "records/records.h"
#include "tests/tools/support/ts_builder.h"

namespace tevra::tools::test {

/**
 * The answer for service 1201 "Uno" with a video and an English audio stream, tables and packets
 * complete.
 */
[[nodiscard]] std::map<int32_t, SPTSConfiguration> sampleAnswer();

/** An output's PID; the attributes are those of pid_attributes.h. */
[[nodiscard]] PIDItem pidItem(int inputPid, int outputPid, int attributes);
/** A section in packets, as an answer holds them. */
[[nodiscard]] std::vector<std::string> packetStrings(int pid, const Bytes& section);

}  // namespace tevra::tools::test
