#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
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

/**
 * What an output carries: items in order of first addition, none with the input PID of another.
 * Finding one takes about the same time however many there are.
 */
class PidList {
 public:
  /** The item of that input PID; null when there is none. Valid until the next append. */
  [[nodiscard]] PIDItem* find(int32_t inputPid);

  /** Appends an item with both PIDs equal to `pid`, which must be new, and no attribute. */
  PIDItem& append(int32_t pid);

  /** All of them, in order. */
  [[nodiscard]] const std::vector<PIDItem>& items() const { return items_; }

  /** Hands out the items and leaves the list empty. */
  [[nodiscard]] std::vector<PIDItem> take();

 private:
  std::vector<PIDItem> items_;
  std::unordered_map<int32_t, size_t> positions_;  ///< of all items, once they are many
};

/**
 * Adds `attribute` to the item whose input PID is `pid` (logged at level 7), or appends an item
 * with both PIDs equal. Always true.
 */
bool addPidItem(PidList& pidList, int32_t pid, PidAttribute attribute);

/** Adds the EMM PIDs of the CAT's CA descriptors; a descriptor that cannot be decoded adds none.
 * Always true. */
bool collectEmmPids(PidList& pidList, const CAT& cat);

}  // namespace tevra
