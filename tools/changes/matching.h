#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tevra::tools {

/** Which elements of two lists are the same thing, by their places in the lists. */
struct Matching {
  std::vector<std::pair<size_t, size_t>> pairs;  ///< in the second list's order
  std::vector<size_t> removed;                   ///< of the first list alone
  std::vector<size_t> added;                     ///< of the second list alone
  bool isReordered = false;                      ///< the pairs stand in another order
};

/** What tells an element of a list from the others; `place` counts from 0. */
using KeyAt = std::function<std::string(size_t place)>;

/** One way to recognise an element: those with equal keys are the same. */
struct MatchingPass {
  KeyAt from;  ///< of the first list; not asked for what an earlier pass has paired
  KeyAt to;    ///< of the second list, likewise
};

/**
 * Pairs the elements of a list of `fromSize` with those of one of `toSize`: by the keys of the
 * first pass, then what is left by those of the next. Of several elements with one key the first is
 * the other list's first, and so on. Takes n log n.
 */
[[nodiscard]] Matching match(size_t fromSize, size_t toSize,
                             const std::vector<MatchingPass>& passes);

}  // namespace tevra::tools
