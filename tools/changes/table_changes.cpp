#include "tools/changes/table_changes.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "tools/changes/descriptor_changes.h"
#include "tools/changes/event_shifts.h"
#include "tools/changes/matching.h"
#include "tools/changes/table_entries.h"
#include "tools/fields/fields_equal.h"
#include "tools/fields/fields_json.h"
#include "tools/tables/table_fields.h"
#include "tools/text/dvb_time.h"

namespace tevra::tools {
namespace {

using Entries = std::vector<Fields>;

KeyAt idAt(const EntryRule& rule, const Entries& entries) {
  return [&](size_t place) { return jsonLine(fieldsJson(keyFields(rule, entries[place]))); };
}

/** Everything in an entry that does not identify it. */
KeyAt contentAt(const EntryRule& rule, const Entries& entries) {
  return [&](size_t place) {
    Fields content;
    for (const Field& field : entries[place]) {
      if (std::find(rule.keys.begin(), rule.keys.end(), field.name) == rule.keys.end()) {
        content.push_back(field);
      }
    }
    return jsonLine(fieldsJson(content));
  };
}

Matching matchEntries(const EntryRule& rule, const Entries& from, const Entries& to) {
  std::vector<MatchingPass> passes = {{idAt(rule, from), idAt(rule, to)}};
  if (rule.mayBeRenumbered) {
    passes.push_back({contentAt(rule, from), contentAt(rule, to)});
  }
  return match(from.size(), to.size(), passes);
}

Change wholeEntry(Change::Kind kind, const EntryRule& rule, const Fields& entry) {
  Change change;
  change.kind = kind;
  change.subject = subjectOf(rule, entry);
  (kind == Change::Kind::kAdded ? change.to : change.from) = entry;
  return change;
}

class TableComparison {
 public:
  TableComparison(const SiTable& from, const SiTable& to) : fromTable_(from), toTable_(to) {}

  Changes compare(const Fields& from, const Fields& to) {
    compareFields({}, from, to);
    noteClock();
    for (size_t i = 0; i < to.size(); ++i) {
      if (const List* list = std::get_if<List>(&to[i].value)) {
        compareEntries(to[i].name, std::get<List>(from[i].value).entries, list->entries);
      }
    }
    return std::move(changes_);
  }

 private:
  /** All but the loops of entries. */
  void compareFields(const Subject& subject, const Fields& from, const Fields& to) {
    for (size_t i = 0; i < to.size(); ++i) {
      if (const auto* loop = std::get_if<DescriptorLoop>(&to[i].value)) {
        appendDescriptorChanges(changes_, subject, std::get<DescriptorLoop>(from[i].value), *loop);
      } else if (!std::holds_alternative<List>(to[i].value) && !isSame(from[i], to[i])) {
        Change change;
        change.subject = subject;
        change.field = to[i].name;
        change.from = from[i];
        change.to = to[i];
        changes_.push_back(std::move(change));
      }
    }
  }

  void compareEntries(const std::string& list, const Entries& from, const Entries& to) {
    const EntryRule* rule = entryRule(list);
    if (rule == nullptr) {
      return;
    }
    const Matching matching = matchEntries(*rule, from, to);
    for (const size_t place : matching.removed) {
      changes_.push_back(wholeEntry(Change::Kind::kRemoved, *rule, from[place]));
    }
    std::vector<std::optional<size_t>> before(to.size());
    for (const auto& [old, place] : matching.pairs) {
      before[place] = old;
    }
    for (size_t place = 0; place < to.size(); ++place) {
      if (before[place]) {
        compareEntry(*rule, from[*before[place]], to[place]);
        noteShift(*before[place], place);
      } else {
        changes_.push_back(wholeEntry(Change::Kind::kAdded, *rule, to[place]));
      }
    }
    if (matching.isReordered) {
      Change change;
      change.kind = Change::Kind::kReordered;
      change.field = list;
      changes_.push_back(std::move(change));
    }
    foldEventShifts(changes_, matching.pairs.size());
  }

  void compareEntry(const EntryRule& rule, const Fields& from, const Fields& to) {
    firstOfEntry_ = changes_.size();
    if (!isSame(from, to)) {
      compareFields(subjectOf(rule, from), from, to);
    }
  }

  /** By how much the event that was compared last moved, if it did. */
  void noteShift(size_t before, size_t after) {
    const EIT* from = std::get_if<EIT>(&fromTable_);
    const EIT* to = std::get_if<EIT>(&toTable_);
    if (from != nullptr && to != nullptr) {
      noteSeconds(firstOfEntry_, "startTime", from->events[before].startTime,
                  to->events[after].startTime);
    }
  }

  /** By how much the clock of a TOT went on. */
  void noteClock() {
    const TOT* from = std::get_if<TOT>(&fromTable_);
    const TOT* to = std::get_if<TOT>(&toTable_);
    if (from != nullptr && to != nullptr) {
      noteSeconds(0, "utcTime", from->utcTime, to->utcTime);
    }
  }

  void noteSeconds(size_t first, const char* field, int64_t from, int64_t to) {
    const auto before = secondsOfDvbTime(from);
    const auto after = secondsOfDvbTime(to);
    for (size_t i = first; i < changes_.size(); ++i) {
      if (changes_[i].field == field && before && after) {
        changes_[i].seconds = *after - *before;
      }
    }
  }

  const SiTable& fromTable_;
  const SiTable& toTable_;
  Changes changes_;
  size_t firstOfEntry_ = 0;
};

}  // namespace

Changes tableChanges(const SiTable& from, const SiTable& to) {
  if (from.index() != to.index() || from == to) {
    return {};
  }
  return TableComparison(from, to).compare(tableFields(from).fields, tableFields(to).fields);
}

}  // namespace tevra::tools
