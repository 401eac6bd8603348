#pragma once

#include <string>
#include <vector>

namespace tevra::tools {

/**
 * The one of `words` that someone may have meant who typed `word`: one letter may be wrong,
 * missing, too much or in its neighbour's place for every three of it, begun ones too. Empty
 * without any; the first of several that are equally near.
 */
[[nodiscard]] std::string nearestTo(const std::string& word, const std::vector<std::string>& words);

}  // namespace tevra::tools
