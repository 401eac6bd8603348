#pragma once

#include <vector>

#include "cfdb/pid_allocator.h"
#include "records/dvbpsi.h"
#include "records/records.h"

namespace tevra {

/** descriptor_tag of the CA descriptor (ISO/IEC 13818-1, 2.6.16). */
inline constexpr int32_t kCaDescriptorTag = 0x09;

/** What the CA descriptor says, owned by `descriptor`; null for one that cannot be decoded and for
 * any other descriptor. Raises std::bad_alloc. */
[[nodiscard]] dvbpsi_ca_dr_t* decodedCa(dvbpsi_descriptor_t& descriptor);

/**
 * The conflict-free form of a descriptor loop, in the same order: of CA descriptors the CA_PID is
 * replaced by its output PID. One that cannot be decoded is logged at level 3 and keeps its tag
 * with an empty payload. Raises std::bad_alloc.
 */
[[nodiscard]] std::vector<Descriptor> cfDescriptors(const std::vector<Descriptor>& descriptors,
                                                    PidAllocator& pids);

/** What is left of a descriptor loop, in the same order, when CA descriptors are dropped: the
 * contract's cfDescriptors has a flag for it. */
[[nodiscard]] std::vector<Descriptor> withoutCaDescriptors(std::vector<Descriptor> descriptors);

}  // namespace tevra
