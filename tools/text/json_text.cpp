#include "tools/text/json_text.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace tevra::tools {
namespace {

using Written = nlohmann::ordered_json;

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

/** The value as the library has it. */
struct Writer {
  Written operator()(const Json::Elements& elements) const {
    Written array = Written::array();
    for (const Json& element : elements) {
      array.push_back(std::visit(*this, element.value()));
    }
    return array;
  }
  Written operator()(const Json::Members& members) const {
    Written object = Written::object();
    for (const auto& [name, member] : members) {
      object[name] = std::visit(*this, member.value());
    }
    return object;
  }
  template <class Value>
  Written operator()(const Value& value) const {
    return value;
  }
};

std::string text(const Json& json, int indent) {
  return std::visit(Writer(), json.value())
      .dump(indent, ' ', /*ensure_ascii=*/false, Written::error_handler_t::replace);
}

}  // namespace

Json::Json(std::nullptr_t value) : value_(value) {}
Json::Json(bool value) : value_(value) {}
Json::Json(double value) : value_(value) {}
Json::Json(const char* value) : value_(std::string(value)) {}
Json::Json(const std::string& value) : value_(value) {}
Json::Json(const std::vector<std::string>& values)
    : value_(Elements(values.begin(), values.end())) {}
Json::Json(std::initializer_list<std::pair<const char*, Json>> members)
    : value_(Members(members.begin(), members.end())) {}
Json::Json(bool isSigned, uint64_t bits) {
  if (isSigned) {
    value_ = static_cast<int64_t>(bits);
  } else {
    value_ = bits;
  }
}

Json::Json(const Json& other) = default;
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(const Json& other) = default;
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;

Json Json::array() {
  Json json;
  json.value_ = Elements();
  return json;
}

Json Json::object() {
  Json json;
  json.value_ = Members();
  return json;
}

Json& Json::operator[](const std::string& name) {
  if (std::holds_alternative<std::nullptr_t>(value_)) {
    value_ = Members();
  }
  auto& members = std::get<Members>(value_);
  const auto found = std::find_if(members.begin(), members.end(),
                                  [&](const auto& member) { return member.first == name; });
  return found != members.end() ? found->second : members.emplace_back(name, Json()).second;
}

void Json::push_back(Json element) {
  if (std::holds_alternative<std::nullptr_t>(value_)) {
    value_ = Elements();
  }
  std::get<Elements>(value_).push_back(std::move(element));
}

std::string indentedJson(const Json& json) {
  return text(json, kIndent);
}

std::string jsonLine(const Json& json) {
  return text(json, kOneLine);
}

}  // namespace tevra::tools
