#pragma once

#include <algorithm>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

namespace tevra::tools {

/** Which elements of two lists are the same thing; it points into both lists. */
template <class Element>
struct Matching {
  /** An element of the second list, and what it was in the first: null where it is new. */
  struct Match {
    const Element* before;  ///< of the first list
    const Element* after;   ///< of the second list
  };

  std::vector<const Element*> removed;  ///< of the first list alone, in its order
  std::vector<Match> elements;          ///< the whole second list, in its order
  bool isReordered = false;             ///< what is in both stands in another order
};

/** Pairs what is not paired yet as far as the keys are equal. */
template <class Element, class KeyOf>
void matchBy(Matching<Element>& matching, const KeyOf& keyOf) {
  using Key = std::decay_t<decltype(keyOf(std::declval<const Element&>()))>;
  std::multimap<Key, const Element*> waiting;  // those of one key in the list's order
  for (const Element* element : matching.removed) {
    waiting.emplace(keyOf(*element), element);
  }
  for (auto& [before, after] : matching.elements) {
    if (before != nullptr) {
      continue;
    }
    const auto [first, last] = waiting.equal_range(keyOf(*after));
    if (first != last) {
      before = first->second;
      waiting.erase(first);
    }
  }
  matching.removed.clear();
  for (const auto& [key, element] : waiting) {
    matching.removed.push_back(element);
  }
  std::sort(matching.removed.begin(), matching.removed.end());
}

/**
 * Pairs the elements of two lists, which must outlive the answer: those with equal keys by the
 * first of the functions are the same, then of what is left those with equal keys by the next. Of
 * several elements with one key the first is the other list's first, and so on. Takes n log n.
 */
template <class Element, class... KeyOf>
[[nodiscard]] Matching<Element> match(const std::vector<Element>& from,
                                      const std::vector<Element>& to, const KeyOf&... keyOf) {
  Matching<Element> matching;
  for (const Element& element : from) {
    matching.removed.push_back(&element);
  }
  for (const Element& element : to) {
    matching.elements.push_back({nullptr, &element});
  }
  (matchBy(matching, keyOf), ...);
  const Element* last = nullptr;
  for (const auto& [before, after] : matching.elements) {
    if (before != nullptr) {
      matching.isReordered = matching.isReordered || (last != nullptr && before < last);
      last = before;
    }
  }
  return matching;
}

}  // namespace tevra::tools
