#pragma once

#include <chrono>
#include <cstdint>
#include <variant>

#include "tools/si/table_identity.h"

namespace tevra::tools {

/** requestConfiguration, which the daemon calls when it starts. */
struct ConfigurationRequest {};

/** notifyNIM. */
struct NimValue {
  int32_t value;  ///< the call's
};

/** A call that brings a table. */
struct NotifiedTable {
  TableKind kind;  ///< by the call, whatever the table_id of an EIT says
  SiTable table;   ///< as it came
};

/** One call of im_SINotifySrv, and when it came. */
struct Notification {
  /** What the call brings. */
  using Content = std::variant<ConfigurationRequest, NimValue, NotifiedTable>;

  std::chrono::system_clock::time_point time;  ///< by the system clock, when the call was taken
  Content content;                             ///< which call it was, and what it brought
};

}  // namespace tevra::tools
