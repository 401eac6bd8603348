#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/si/si_table.h"

/** Tables as records, made for tests of what is done with them. */
namespace tevra::tools::test {

[[nodiscard]] Descriptor descriptorRecord(int tag, const std::string& data);
/** A service descriptor (EN 300 468, 6.2.33) with the provider "Maker". */
[[nodiscard]] Descriptor serviceDescriptor(int type, const std::string& name);
[[nodiscard]] Descriptor languageDescriptor(const std::string& code);
[[nodiscard]] Descriptor caDescriptor(int caSystemId, int pid);
/** A short event descriptor in English, without a text. */
[[nodiscard]] Descriptor shortEventDescriptor(const std::string& name);

[[nodiscard]] PMTES streamRecord(int type, int pid,
                                 const std::vector<Descriptor>& descriptors = {});
/** A running service that is not scrambled. */
[[nodiscard]] SDTService serviceRecord(int id, const std::string& name);
/** An event of half an hour. */
[[nodiscard]] EITEvent eventRecord(int id, int64_t startTime, const std::string& name);

/** Version 3 of transport stream 1, each programme as its number and PID. */
[[nodiscard]] PAT patRecord(const std::vector<std::pair<int, int>>& programs);
/** Version 3 of service 101, PCR on PID 502. */
[[nodiscard]] PMT pmtRecord(const std::vector<PMTES>& streams);
/** Version 3 of transport stream 1 of network 2. */
[[nodiscard]] SDT sdtRecord(const std::vector<SDTService>& services);
/** Version 3 of service 101's schedule. */
[[nodiscard]] EIT eitRecord(const std::vector<EITEvent>& events);
[[nodiscard]] CAT catRecord(const std::vector<Descriptor>& descriptors);
[[nodiscard]] TOT totRecord(int64_t utcTime);

/** 1993-10-13 at the hour, minute and second that the digits of `clock` read: 0x124500. */
[[nodiscard]] int64_t timeAt(int64_t clock);

}  // namespace tevra::tools::test
