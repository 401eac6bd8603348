#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace tevra::tools {

/** A value to be written as JSON: null until it is made something. */
class Json {
 public:
  /** An array's. */
  using Elements = std::vector<Json>;
  /** An object's, in the order in which they were first set. */
  using Members = std::vector<std::pair<std::string, Json>>;
  /** What a value can be. */
  using Value =
      std::variant<std::nullptr_t, bool, int64_t, uint64_t, double, std::string, Elements, Members>;

  // NOLINTBEGIN(google-explicit-constructor)
  ///@{
  /** Of what it says. Texts are UTF-8. */
  Json(std::nullptr_t value = nullptr);
  Json(bool value);
  Json(double value);
  Json(const char* value);
  Json(const std::string& value);
  Json(const std::vector<std::string>& values);
  Json(std::initializer_list<std::pair<const char*, Json>> members);
  template <class Whole, class = std::enable_if_t<std::is_integral_v<Whole>>>
  Json(Whole value) : Json(std::is_signed_v<Whole>, static_cast<uint64_t>(value)) {}
  ///@}
  // NOLINTEND(google-explicit-constructor)

  ///@{
  /** As of any value: a copy is deep. Not here, so that one file compiles them. */
  Json(const Json& other);
  Json(Json&& other) noexcept;
  Json& operator=(const Json& other);
  Json& operator=(Json&& other) noexcept;
  ~Json();
  ///@}

  /** An array without elements. */
  [[nodiscard]] static Json array();
  /** An object without members. */
  [[nodiscard]] static Json object();

  /** A member, null if there was none by then; of null, which becomes an object, too. */
  Json& operator[](const std::string& name);
  /** Adds an element to an array, or to null, which becomes one. */
  void push_back(Json element);

  /** What it is. */
  [[nodiscard]] const Value& value() const { return value_; }

 private:
  Json(bool isSigned, uint64_t bits);

  Value value_;
};

///@{
/** Over several lines or on one, without a newline at the end. What is not UTF-8 becomes U+FFFD. */
[[nodiscard]] std::string indentedJson(const Json& json);
[[nodiscard]] std::string jsonLine(const Json& json);
///@}

/** The value; null where there is none. */
template <class Value>
[[nodiscard]] Json orNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

/** An array of what `toJson` makes of each record of a container. */
template <class Records, class ToJson>
[[nodiscard]] Json jsonList(const Records& records, ToJson toJson) {
  Json list = Json::array();
  for (const auto& record : records) {
    list.push_back(toJson(record));
  }
  return list;
}

}  // namespace tevra::tools
