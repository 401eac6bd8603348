#include "tools/changes/table_changes.h"

#include <algorithm>
#include <map>
#include <utility>

#include "tools/changes/descriptor_changes.h"
#include "tools/changes/matching.h"
#include "tools/changes/table_entries.h"
#include "tools/tables/table_fields.h"

namespace tevra::tools {
namespace {

using Kind = Change::Kind;
using Entries = std::vector<Fields>;

Matching<Fields> matchEntries(const EntryRule& rule, const Entries& from, const Entries& to) {
  const auto id = [&](const Fields& entry) { return keyFields(rule, entry); };
  const auto content = [&](const Fields& entry) { return contentFields(rule, entry); };
  return rule.mayBeRenumbered ? match(from, to, id, content) : match(from, to, id);
}

/** All but the loops of entries; the two have the same fields in the same order. */
void appendFieldChanges(Changes& changes, const Subject& subject, const Fields& from,
                        const Fields& to) {
  auto before = from.begin();
  for (const Field& after : to) {
    if (const auto* loop = std::get_if<DescriptorLoop>(&after.value)) {
      appendDescriptorChanges(changes, subject, std::get<DescriptorLoop>(before->value), *loop);
    } else if (!std::holds_alternative<List>(after.value) && !(*before == after)) {
      changes.push_back(fieldChange(subject, *before, after));
    }
    ++before;
  }
}

/**
 * Makes one change of those of an EIT that say that an event's start time moved, as far as they
 * moved equally; it stands where the first of them stood, and an event that moved alone keeps its
 * own. `events` is how many events both tables have.
 */
void foldEventShifts(Changes& changes, size_t events) {
  Changes kept;
  std::map<int64_t, size_t> firsts;  // places in `kept`, by how far the events moved
  for (Change& change : changes) {
    const auto [first, isFirst] = change.seconds ? firsts.emplace(*change.seconds, kept.size())
                                                 : std::pair(firsts.end(), true);
    if (isFirst) {
      kept.push_back(std::move(change));
    } else {
      kept[first->second].subject.ids.push_back(change.subject.ids.front());
    }
  }
  for (Change& change : kept) {
    const size_t moved = change.subject.ids.size();
    if (moved > 1) {
      change.subject.label = std::to_string(moved) + " events";
      change.isOfAll = moved == events;
    }
  }
  // What happened to many comes before what happened to one.
  std::stable_partition(kept.begin(), kept.end(),
                        [](const Change& change) { return change.subject.ids.size() != 1; });
  changes = std::move(kept);
}

void appendEntryChanges(Changes& changes, const EntryRule& rule, const Entries& from,
                        const Entries& to) {
  const Matching<Fields> matching = matchEntries(rule, from, to);
  for (const Fields* entry : matching.removed) {
    changes.push_back(wholeChange(Kind::kRemoved, subjectOf(rule, *entry), *entry, {}));
  }
  for (const auto& [before, after] : matching.elements) {
    if (before == nullptr) {
      changes.push_back(wholeChange(Kind::kAdded, subjectOf(rule, *after), {}, *after));
    } else if (!(*before == *after)) {
      appendFieldChanges(changes, subjectOf(rule, *before), *before, *after);
    }
  }
  if (matching.isReordered) {
    changes.push_back(otherOrder({}, rule.list));
  }
  foldEventShifts(changes, from.size() - matching.removed.size());
}

}  // namespace

Changes tableChanges(const SiTable& from, const SiTable& to) {
  if (from.index() != to.index() || from == to) {
    return {};
  }
  const Fields fieldsBefore = tableFields(from).fields;
  const Fields fieldsAfter = tableFields(to).fields;
  Changes changes;
  appendFieldChanges(changes, {}, fieldsBefore, fieldsAfter);
  auto before = fieldsBefore.begin();
  for (const Field& after : fieldsAfter) {
    const EntryRule* rule = entryRule(after.name);
    if (rule != nullptr) {
      appendEntryChanges(changes, *rule, std::get<List>(before->value).entries,
                         std::get<List>(after.value).entries);
    }
    ++before;
  }
  return changes;
}

}  // namespace tevra::tools
