#include "tools/listen/notification_text.h"

#include <vector>

#include "tools/changes/change_text.h"
#include "tools/listen/table_facts.h"
#include "tools/text/dvb_text.h"
#include "tools/text/dvb_time.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

using Clock = std::chrono::system_clock;
using Options = NotificationTextOptions;
using Texts = std::vector<std::string>;

constexpr size_t kKindWidth = 14;
constexpr size_t kMostLines = 12;

// Select Graphic Rendition sequences of ECMA-48, 8.3.117.
constexpr const char* kReset = "\x1b[0m";
constexpr const char* kPlain = "";
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kFaint = "\x1b[2m";
constexpr const char* kRed = "\x1b[31m";
constexpr const char* kGreen = "\x1b[32m";
constexpr const char* kYellow = "\x1b[33m";
constexpr const char* kBoldMagenta = "\x1b[1;35m";

const char* colourOf(char sign) {
  if (sign == '~') {
    return kYellow;
  }
  return sign == '+' ? kGreen : kRed;
}

std::string padded(const std::string& kind) {
  return kind + std::string(kind.size() < kKindWidth ? kKindWidth - kind.size() : 1, ' ');
}

/** "version 3"; "version 3 -> 4" where it has moved. */
std::string versionText(int version, const TableNews& news) {
  const auto last = news.last ? versionOf(*news.last) : std::nullopt;
  const bool hasMoved = last && *last != version;
  return "version " + (hasMoved ? std::to_string(*last) + " -> " : "") + std::to_string(version);
}

/** The time of a TOT, how far it went since the last one, and how the machine's clock differs. */
std::string clockText(const TOT& tot, const TableNews& news, Clock::time_point now) {
  std::string text = utcTimeText(tot.utcTime);
  for (const Change& change : news.changes) {
    if (change.field == "utcTime" && change.seconds) {
      text += " (" + spanText(*change.seconds) + ")";
    }
  }
  const auto behind = secondsBehind(tot, now);
  return text + (behind ? ", system clock " + spanText(*behind) : "");
}

bool hasNewVersion(const SiTable& table, const TableNews& news) {
  return news.last && versionOf(*news.last) != versionOf(table);
}

/** What of the changes stands in the line of the table alone. */
std::string stateText(const SiTable& table, const TableNews& news, bool hasLines) {
  if (!news.last) {
    return {};
  }
  if (news.changes.empty()) {
    return "unchanged";
  }
  if (!versionOf(table)) {
    return {};
  }
  const bool isNew = hasNewVersion(table, news);
  if (isNew == hasLines) {
    return {};
  }
  return isNew ? "otherwise unchanged" : "changed with the same version";
}

/** What it is about: an EIT by its table_id too. */
std::string subjectText(const SiTable& table) {
  const TableIdentity identity = identityOf(table);
  const bool isEit = std::holds_alternative<EIT>(table);
  return identity.subject() + (isEit ? ", table " + hex(identity.tableId, 2) : "");
}

Texts headline(const SiTable& table, const TableNews& news, Clock::time_point now, bool hasLines) {
  Texts parts;
  if (std::string subject = subjectText(table); !subject.empty()) {
    parts.push_back(std::move(subject));
  }
  if (const auto version = versionOf(table)) {
    parts.push_back(versionText(*version, news));
  }
  if (const TOT* tot = std::get_if<TOT>(&table)) {
    parts.push_back(clockText(*tot, news, now));
  }
  const Texts contents = contentTexts(table);
  parts.insert(parts.end(), contents.begin(), contents.end());
  const std::string state = stateText(table, news, hasLines);
  if (!state.empty()) {
    parts.push_back(state);
  }
  return parts;
}

/** `text` made harmless, in a colour if there are colours. */
std::string painted(const Options& options, const char* colour, const std::string& text) {
  const std::string harmless = printable(text);
  const bool isPainted = options.inColour && *colour != '\0';
  return isPainted ? colour + harmless + kReset : harmless;
}

std::string changesText(const Options& options, const std::string& stamp,
                        const std::vector<ChangeLine>& lines) {
  const std::string start = stamp + std::string(kKindWidth, ' ');
  // A line that says "1 more" would take the place of the one it speaks of.
  const bool isCut = !options.all && lines.size() > kMostLines + 1;
  const size_t shown = isCut ? kMostLines : lines.size();
  std::string text;
  for (size_t i = 0; i < shown; ++i) {
    const auto& [sign, change] = lines[i];
    text += start;
    text += painted(options, colourOf(sign), sign + (" " + change));
    text += "\n";
  }
  if (isCut) {
    const std::string rest = std::to_string(lines.size() - shown);
    text +=
        start + painted(options, kYellow, "... and " + rest + " more (--all shows them)") + "\n";
  }
  return text;
}

}  // namespace

std::string notificationText(const Notification& notification, const TableNews& news,
                             const NotificationTextOptions& options) {
  const std::string stamp =
      painted(options, kFaint, timeStamp(notification.time, options.zone)) + "  ";
  if (const auto* nim = std::get_if<NimValue>(&notification.content)) {
    const std::string value = std::to_string(nim->value);
    return stamp + painted(options, kBold, padded("NIM")) + "value " + value + "\n";
  }
  const auto* notified = std::get_if<NotifiedTable>(&notification.content);
  if (notified == nullptr) {
    return stamp + painted(options, kBoldMagenta, "configuration requested") + "\n";
  }
  const auto& [kind, table] = *notified;
  const auto lines = changeLines(news.changes);
  const Texts parts = headline(table, news, notification.time, !lines.empty());
  const bool isUnchanged = news.last && lines.empty() && !hasNewVersion(table, news);
  return stamp + painted(options, isUnchanged ? kFaint : kBold, padded(namesOf(kind).brief)) +
         painted(options, isUnchanged ? kFaint : kPlain, joined(parts, ", ")) + "\n" +
         changesText(options, stamp, lines);
}

}  // namespace tevra::tools
