#include "tools/changes/event_shifts.h"

#include <algorithm>
#include <map>

namespace tevra::tools {
namespace {

/** The places of changes by how far their event moved. */
using Groups = std::map<int64_t, std::vector<size_t>>;

Groups groupsOf(const Changes& changes) {
  Groups groups;
  for (size_t i = 0; i < changes.size(); ++i) {
    if (changes[i].seconds) {
      groups[*changes[i].seconds].push_back(i);
    }
  }
  return groups;
}

/** The change at the group's first place takes in the others. */
void fold(Changes& changes, const std::vector<size_t>& group, size_t events) {
  Change& whole = changes[group.front()];
  for (size_t i = 1; i < group.size(); ++i) {
    whole.subject.ids.push_back(changes[group[i]].subject.ids.front());
  }
  whole.subject.label = std::to_string(group.size()) + " events";
  whole.isOfAll = group.size() == events;
}

}  // namespace

void foldEventShifts(Changes& changes, size_t events) {
  std::vector<bool> isFolded(changes.size(), false);
  for (const auto& [seconds, group] : groupsOf(changes)) {
    if (group.size() < 2) {
      continue;
    }
    fold(changes, group, events);
    for (size_t i = 1; i < group.size(); ++i) {
      isFolded[group[i]] = true;
    }
  }
  Changes kept;
  for (size_t i = 0; i < changes.size(); ++i) {
    if (!isFolded[i]) {
      kept.push_back(std::move(changes[i]));
    }
  }
  // What happened to many comes before what happened to one.
  std::stable_partition(kept.begin(), kept.end(),
                        [](const Change& change) { return change.subject.ids.size() != 1; });
  changes = std::move(kept);
}

}  // namespace tevra::tools
