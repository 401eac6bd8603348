#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tevra::tools {

/** Members keep the order in which they are set. */
using Json = nlohmann::ordered_json;

///@{
/** The value as text: over several lines, or on one. No newline at the end. Texts are UTF-8; what
 * is not becomes U+FFFD. */
[[nodiscard]] std::string indentedJson(const Json& json);
[[nodiscard]] std::string jsonLine(const Json& json);
///@}

/** The value; null where there is none. */
template <class Value>
[[nodiscard]] Json orNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

/** An array of what `toJson` makes of each record. */
template <class Record, class ToJson>
[[nodiscard]] Json jsonList(const std::vector<Record>& records, ToJson toJson) {
  Json list = Json::array();
  for (const Record& record : records) {
    list.push_back(toJson(record));
  }
  return list;
}

}  // namespace tevra::tools
