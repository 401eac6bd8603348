#pragma once

#include "tools/listen/notification.h"
#include "tools/listen/table_history.h"

namespace tevra::tools {

/** Writes notifications as they come; what each writes is flushed. */
class NotificationPrinter {
 public:
  NotificationPrinter() = default;
  virtual ~NotificationPrinter() = default;
  NotificationPrinter(const NotificationPrinter&) = delete;
  NotificationPrinter& operator=(const NotificationPrinter&) = delete;

  /** `news` are of the notification's table; without one they are as constructed. */
  virtual void print(const Notification& notification, const TableNews& news) = 0;
};

}  // namespace tevra::tools
