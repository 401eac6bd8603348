#include "tools/table_json.h"

#include <nlohmann/json.hpp>

#include "tools/hex_digits.h"

namespace tevra::tools {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kIndent = 2;

void append(Json& object, const Fields& fields);

Json descriptorJson(const DescriptorFields& descriptor) {
  Json json;
  json["tag"] = descriptor.tag;
  json["name"] = descriptor.name;
  json["data"] = hexDigits(descriptor.payload);
  if (descriptor.isDecoded) {
    append(json["fields"] = Json::object(), descriptor.fields);
  } else if (!descriptor.problem.empty()) {
    json["problem"] = descriptor.problem;
  }
  return json;
}

/** Adds a field's value to an object. */
class ValueAppender {
 public:
  ValueAppender(Json& object, const std::string& name) : object_(object), name_(name) {}

  void operator()(const Number& number) const {
    object_[name_] = number.value;
    if (!number.meaning.empty()) {
      object_[name_ + "Name"] = number.meaning;
    }
  }
  void operator()(const Flag& flag) const { object_[name_] = flag.value; }
  void operator()(const Text& text) const { object_[name_] = text.utf8; }
  void operator()(const Bytes& bytes) const { object_[name_] = hexDigits(bytes.data); }
  void operator()(const List& list) const {
    Json& array = object_[name_] = Json::array();
    for (const Fields& entry : list.entries) {
      Json object = Json::object();
      append(object, entry);
      array.push_back(std::move(object));
    }
  }
  void operator()(const DescriptorLoop& loop) const {
    Json& array = object_[name_] = Json::array();
    for (const DescriptorFields& descriptor : loop.entries) {
      array.push_back(descriptorJson(descriptor));
    }
  }

 private:
  Json& object_;
  const std::string& name_;
};

void append(Json& object, const Fields& fields) {
  for (const Field& field : fields) {
    std::visit(ValueAppender(object, field.name), field.value);
  }
}

}  // namespace

std::string tableJson(const TableFields& table) {
  Json json;
  json["table"] = table.name;
  append(json, table.fields);
  return json.dump(kIndent, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace);
}

}  // namespace tevra::tools
