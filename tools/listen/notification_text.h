#pragma once

#include <ostream>
#include <string>

#include "tools/changes/change_text.h"
#include "tools/listen/notification_printer.h"
#include "tools/text/time_stamp.h"

namespace tevra::tools {

/**
 * Notifications for people, every line with its time: a line with the kind, what table it is about,
 * the version and how much the table holds, then below it a line for everything that differs from
 * the last table of the same kind and ids. Control characters of any text are replaced.
 */
class NotificationTextPrinter : public NotificationPrinter {
 public:
  /** How much to print, and how. */
  struct Options {
    bool inColour = false;     ///< without it no escape sequence is written
    bool all = false;          ///< every difference, else the first kMostLines of a table
    Zone zone = Zone::kLocal;  ///< of the time before every line; the tables' own times are UTC
  };

  /** A table with one line more is still printed whole: "1 more" would take as much room. */
  static constexpr size_t kMostLines = 12;

  /** `out` must outlive the printer. */
  NotificationTextPrinter(std::ostream& out, const Options& options)
      : out_(out), options_(options) {}

  void print(const Notification& notification, const TableNews& news) override;

 private:
  void printChanges(const std::string& stamp, const std::vector<ChangeLine>& lines);
  /** `text` made harmless, in a colour if there are colours. */
  [[nodiscard]] std::string painted(const char* colour, const std::string& text) const;

  std::ostream& out_;
  Options options_;
};

}  // namespace tevra::tools
