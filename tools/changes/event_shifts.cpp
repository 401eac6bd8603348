#include "tools/changes/event_shifts.h"

#include <algorithm>
#include <map>
#include <utility>

namespace tevra::tools {

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

}  // namespace tevra::tools
