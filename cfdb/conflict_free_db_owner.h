#pragma once

#include <cstdint>

namespace tevra {

/**
 * What the conflict-free database asks of whoever owns it: the time offset and the EIT versions
 * live there.
 *
 * Called while the database holds an EIT lock, so an implementation may take locks of its own but
 * must not call back into the database.
 */
class ConflictFreeDBOwner {
 public:
  /** DVB time minus system time, in seconds. */
  [[nodiscard]] virtual int64_t timeOffset() = 0;

  /** False until a TOT has met a set system clock. */
  [[nodiscard]] virtual bool timeOffsetValid() = 0;

  /** The next version (modulo 32) of an EIT sub-table, remembered as handed out. */
  [[nodiscard]] virtual int32_t selectEITVersion(int32_t serviceId, int32_t tableId) = 0;

  /** The service is still broadcast: its versions must not age out at the next start. */
  virtual void resetEITRestartCounter(int32_t serviceId) = 0;

 protected:
  ~ConflictFreeDBOwner() = default;
};

}  // namespace tevra
