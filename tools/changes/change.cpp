#include "tools/changes/change.h"

namespace tevra::tools {
namespace {

std::optional<int64_t> secondsBetween(const Field& from, const Field& to) {
  const Time* before = std::get_if<Time>(&from.value);
  const Time* after = std::get_if<Time>(&to.value);
  const bool areKnown = before != nullptr && after != nullptr && before->seconds && after->seconds;
  return areKnown ? std::make_optional(*after->seconds - *before->seconds) : std::nullopt;
}

}  // namespace

Change fieldChange(const Subject& subject, const Field& from, const Field& to) {
  Change change;
  change.subject = subject;
  change.field = to.name;
  change.from = from;
  change.to = to;
  change.seconds = secondsBetween(from, to);
  return change;
}

Change wholeChange(Change::Kind kind, const Subject& subject, const Side& from, const Side& to) {
  Change change;
  change.kind = kind;
  change.subject = subject;
  change.from = from;
  change.to = to;
  return change;
}

Change otherOrder(const Subject& subject, const std::string& list) {
  Change change;
  change.kind = Change::Kind::kReordered;
  change.subject = subject;
  change.field = list;
  return change;
}

}  // namespace tevra::tools
