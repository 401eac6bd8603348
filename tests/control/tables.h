#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/records.h"

/** Small tables for tests. */
namespace tevra::test {

/** A DVB time value: Modified Julian Date and a time of day. */
[[nodiscard]] int64_t dvbTime(int64_t mjd, int hours, int minutes, int seconds);

[[nodiscard]] TOT totAt(int64_t time);

/** Sub-table of one event per start time, with recognisable values in every other member. */
[[nodiscard]] EIT makeEIT(int32_t serviceId, int32_t tableId, int32_t version,
                          const std::vector<int64_t>& startTimes);

/** `eits` under their own service and table ids. */
[[nodiscard]] EITMap eitMap(const std::vector<EIT>& eits);

/** One H.264 and one MPEG audio stream on `firstPid` and the next, PCR with the video. */
[[nodiscard]] PMT makePMT(int32_t programNumber, int32_t firstPid);

/** Transport stream 0x0101 with one programme per PMT PID: numbers from 1 up. */
[[nodiscard]] PAT makePAT(const std::vector<int32_t>& pmtPids);

/** One television service, with a service descriptor. */
[[nodiscard]] SDT makeSDT(int32_t serviceId);

/** The output of one service that leaves the chain here as service 1201 named `name`. */
[[nodiscard]] SrvOutputRequest outputOf(int32_t inputSID, const std::string& name);

/** The key of the answer to outputOf. */
inline constexpr int32_t kGlobalSID = 77;

}  // namespace tevra::test
