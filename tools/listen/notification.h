#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "tools/si/si_table.h"

namespace tevra::tools {

/** One call of im_SINotifySrv, and when it came. */
struct Notification {
  /** In the order of the interface. */
  enum class Kind {
    kNim,
    kPat,
    kSdt,
    kPmt,
    kNit,
    kTot,
    kBat,
    kCat,
    kEitPresentFollowing,
    kEitSchedule,
    kConfigurationRequest,
  };

  Kind kind = Kind::kNim;                      ///< which call
  std::chrono::system_clock::time_point time;  ///< by the system clock, when the call was taken
  std::optional<SiTable> table;                ///< of a notification that carries one
  int32_t value = 0;                           ///< of notifyNIM
};

/** "EIT p/f", for people. */
[[nodiscard]] const char* kindText(Notification::Kind kind);
/** "EITPresentFollowing", for programs: as the interface has it. */
[[nodiscard]] const char* kindName(Notification::Kind kind);

}  // namespace tevra::tools
