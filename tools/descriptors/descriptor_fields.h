#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "records/records.h"
#include "tools/fields/fields.h"

namespace tevra::tools {

/**
 * The descriptors of a loop, in order, decoded where their syntax is known: those of ISO/IEC
 * 13818-1 and EN 300 468 that occur in broadcasts, and a few private ones where the loop says whose
 * they are. `registrations` are the format_identifiers registered outside of the loop.
 *
 * libdvbpsi's descriptor decoders are not used: several read or write beyond the payload, and some
 * decode wrongly (NVOD_reference, CA_identifier, linkage).
 *
 * Any payload is legal: what contradicts its syntax is not decoded and says why. Of the private
 * descriptors only 0x83 is decoded without a word on its owner, since networks use it so: as
 * EACEM's logical channels, with a field that says that this is assumed.
 */
[[nodiscard]] DescriptorLoop describe(const std::vector<Descriptor>& descriptors,
                                      const std::set<uint32_t>& registrations = {});

/** The format_identifiers that the registration descriptors of the loop name. */
[[nodiscard]] std::set<uint32_t> registeredFormats(const std::vector<Descriptor>& descriptors);

}  // namespace tevra::tools
