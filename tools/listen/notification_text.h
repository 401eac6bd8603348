#pragma once

#include <string>

#include "tools/listen/notification.h"
#include "tools/listen/table_history.h"
#include "tools/text/time_stamp.h"

namespace tevra::tools {

/** How much to say of a notification, and how. */
struct NotificationTextOptions {
  bool inColour = false;     ///< without it there is no escape sequence
  bool all = false;          ///< every difference, else the first 12 of a table
  Zone zone = Zone::kLocal;  ///< of the time before every line; the tables' own times are UTC
};

/**
 * A notification for people, every line with its time: a line with the kind, what table it is
 * about, the version and how much the table holds, then below it a line for everything that differs
 * from the last table of the same kind and ids. Control characters of any text are replaced. `news`
 * are of its table; without one they are as constructed.
 */
[[nodiscard]] std::string notificationText(const Notification& notification, const TableNews& news,
                                           const NotificationTextOptions& options);

}  // namespace tevra::tools
