#include "tools/changes/matching.h"

#include <algorithm>
#include <deque>
#include <numeric>
#include <unordered_map>

namespace tevra::tools {
namespace {

std::vector<size_t> placesOf(size_t size) {
  std::vector<size_t> places(size);
  std::iota(places.begin(), places.end(), 0);
  return places;
}

/** Pairs what is in `removed` and `added` as far as the keys are equal. */
void matchBy(const MatchingPass& pass, Matching& matching) {
  std::unordered_map<std::string, std::deque<size_t>> waiting;
  for (const size_t place : matching.removed) {
    waiting[pass.from(place)].push_back(place);
  }
  std::vector<size_t> added;
  for (const size_t place : matching.added) {
    const auto found = waiting.find(pass.to(place));
    if (found == waiting.end() || found->second.empty()) {
      added.push_back(place);
      continue;
    }
    matching.pairs.emplace_back(found->second.front(), place);
    found->second.pop_front();
  }
  matching.added = std::move(added);
  matching.removed.clear();
  for (const auto& [key, places] : waiting) {
    matching.removed.insert(matching.removed.end(), places.begin(), places.end());
  }
  std::sort(matching.removed.begin(), matching.removed.end());
}

}  // namespace

Matching match(size_t fromSize, size_t toSize, const std::vector<MatchingPass>& passes) {
  Matching matching;
  matching.removed = placesOf(fromSize);
  matching.added = placesOf(toSize);
  for (const MatchingPass& pass : passes) {
    if (!matching.removed.empty() && !matching.added.empty()) {
      matchBy(pass, matching);
    }
  }
  auto& pairs = matching.pairs;
  std::sort(pairs.begin(), pairs.end(),
            [](const auto& a, const auto& b) { return a.second < b.second; });
  matching.isReordered = !std::is_sorted(pairs.begin(), pairs.end());
  return matching;
}

}  // namespace tevra::tools
