#include "tools/text/nearest.h"

#include <algorithm>

namespace tevra::tools {
namespace {

constexpr size_t kLettersAFault = 3;

/** How many letters have to be changed, added, left out or swapped with their neighbour. */
size_t distanceOf(const std::string& a, const std::string& b) {
  // faults[i][j]: between the first i letters of a and the first j of b.
  std::vector<std::vector<size_t>> faults(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    for (size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        faults[i][j] = i + j;
        continue;
      }
      const bool isSame = a[i - 1] == b[j - 1];
      faults[i][j] = std::min(
          {faults[i - 1][j] + 1, faults[i][j - 1] + 1, faults[i - 1][j - 1] + (isSame ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        faults[i][j] = std::min(faults[i][j], faults[i - 2][j - 2] + 1);
      }
    }
  }
  return faults.back().back();
}

}  // namespace

std::string nearestTo(const std::string& word, const std::vector<std::string>& words) {
  std::string nearest;
  size_t least = (word.size() + kLettersAFault - 1) / kLettersAFault + 1;
  for (const std::string& candidate : words) {
    const bool isLonger = candidate.size() >= word.size() + least;
    const size_t distance =
        isLonger || word.size() >= candidate.size() + least ? least : distanceOf(word, candidate);
    if (distance < least) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace tevra::tools
