#pragma once

#include <cstdint>
#include <vector>

#include "records/records.h"

namespace tevra {

/** Why an output carries a PID; bits of PIDItem::attributes. Bit 0x01 is not used. */
enum class PidAttribute : int32_t {
  Pmt = 0x02,
  Pcr = 0x04,
  Es = 0x08,
  Ecm = 0x10,
  Emm = 0x20,
};

/** In order of first addition; a PID occurs once. */
using PidList = std::vector<PIDItem>;

/**
 * Adds `attribute` to the item whose input PID is `pid` (logged at level 7), or appends an item
 * with both PIDs equal. Always true.
 */
bool addPidItem(PidList& pidList, int32_t pid, PidAttribute attribute);

/** Adds the EMM PIDs of the CAT's CA descriptors; a descriptor that cannot be decoded adds none.
 * Always true. */
bool collectEmmPids(PidList& pidList, const CAT& cat);

}  // namespace tevra
