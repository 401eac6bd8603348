#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tevra::test {

struct SyslogLine {
  int priority;
  std::string text;

  bool operator==(const SyslogLine& other) const {
    return priority == other.priority && text == other.text;
  }
};

std::ostream& operator<<(std::ostream& out, const SyslogLine& line);

struct SyslogOpening {
  std::string ident;
  int option;
  int facility;
};

/** What this program passed to syslog since the last call; none of it reached the machine's log. */
[[nodiscard]] std::vector<SyslogLine> takeSyslogLines();

/** What this program passed to openlog since it started. */
[[nodiscard]] std::vector<SyslogOpening> syslogOpenings();

}  // namespace tevra::test
