#include "tools/changes/descriptor_changes.h"

#include <string>
#include <utility>

#include "tools/changes/matching.h"
#include "tools/changes/table_entries.h"
#include "tools/fields/field_text.h"
#include "tools/fields/fields_equal.h"

namespace tevra::tools {
namespace {

using Descriptors = std::vector<DescriptorFields>;
using Differing = std::vector<std::pair<const Field*, const Field*>>;

bool isValue(const Field& field) {
  return !std::holds_alternative<List>(field.value) &&
         !std::holds_alternative<DescriptorLoop>(field.value);
}

bool collect(Differing& differing, const Fields& from, const Fields& to);

/** As collect, for the entries of a loop. */
bool collectLoop(Differing& differing, const List& from, const List& to) {
  if (from.entries.size() != to.entries.size()) {
    return false;
  }
  for (size_t i = 0; i < from.entries.size(); ++i) {
    if (!collect(differing, from.entries[i], to.entries[i])) {
      return false;
    }
  }
  return true;
}

/** Gathers the values that differ; false where the two do not have the same ones. */
bool collect(Differing& differing, const Fields& from, const Fields& to) {
  if (from.size() != to.size()) {
    return false;
  }
  for (size_t i = 0; i < from.size(); ++i) {
    const Field& before = from[i];
    const Field& after = to[i];
    if (isSame(before, after)) {
      continue;
    }
    if (before.name != after.name || before.value.index() != after.value.index()) {
      return false;
    }
    if (isValue(after)) {
      differing.emplace_back(&before, &after);
    } else if (const List* list = std::get_if<List>(&after.value);
               list == nullptr || !collectLoop(differing, std::get<List>(before.value), *list)) {
      return false;
    }
  }
  return true;
}

Change changeOf(Change::Kind kind, const Subject& subject, const DescriptorFields& descriptor) {
  Change change;
  change.kind = kind;
  change.subject = subject;
  change.descriptor = descriptor.name;
  change.descriptorKey = descriptorKey(descriptor);
  return change;
}

void appendChange(Changes& changes, const Subject& subject, const DescriptorFields& from,
                  const DescriptorFields& to) {
  if (isSame(from, to)) {
    return;
  }
  Differing differing;
  const bool isComparable = from.isDecoded && to.isDecoded;
  if (!isComparable || !collect(differing, from.fields, to.fields) || differing.empty()) {
    Change change = changeOf(Change::Kind::kChanged, subject, to);
    change.from = from;
    change.to = to;
    changes.push_back(std::move(change));
    return;
  }
  for (const auto& [before, after] : differing) {
    Change change = changeOf(Change::Kind::kChanged, subject, to);
    change.field = after->name;
    change.from = *before;
    change.to = *after;
    changes.push_back(std::move(change));
  }
}

/** First those that are equal, then what may be the same one with another payload. */
Matching matchDescriptors(const Descriptors& from, const Descriptors& to) {
  const auto whole = [](const Descriptors& list) {
    return [&list](size_t i) { return std::to_string(list[i].tag) + " " + list[i].payload; };
  };
  const auto key = [](const Descriptors& list) {
    return [&list](size_t i) {
      const auto field = descriptorKey(list[i]);
      return std::to_string(list[i].tag) + (field ? " " + valueText(*field) : "");
    };
  };
  return match(from.size(), to.size(), {{whole(from), whole(to)}, {key(from), key(to)}});
}

}  // namespace

void appendDescriptorChanges(Changes& changes, const Subject& subject, const DescriptorLoop& from,
                             const DescriptorLoop& to) {
  const Matching matching = matchDescriptors(from.entries, to.entries);
  for (const size_t place : matching.removed) {
    changes.push_back(changeOf(Change::Kind::kRemoved, subject, from.entries[place]));
    changes.back().from = from.entries[place];
  }
  for (const auto& [before, after] : matching.pairs) {
    appendChange(changes, subject, from.entries[before], to.entries[after]);
  }
  for (const size_t place : matching.added) {
    changes.push_back(changeOf(Change::Kind::kAdded, subject, to.entries[place]));
    changes.back().to = to.entries[place];
  }
  if (matching.isReordered) {
    Change change;
    change.kind = Change::Kind::kReordered;
    change.subject = subject;
    change.field = "descriptors";
    changes.push_back(std::move(change));
  }
}

}  // namespace tevra::tools
