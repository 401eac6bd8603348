#include "tools/fields/fields_json.h"

#include "tools/text/words.h"

namespace tevra::tools {
namespace {

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
  void operator()(const Time& time) const { object_[name_] = time.shown; }
  void operator()(const Bytes& bytes) const { object_[name_] = hexDigits(bytes.data); }
  void operator()(const List& list) const { object_[name_] = jsonList(list.entries, &fieldsJson); }
  void operator()(const DescriptorLoop& loop) const {
    object_[name_] = jsonList(loop.entries, &descriptorJson);
  }

 private:
  Json& object_;
  const std::string& name_;
};

}  // namespace

void appendFields(Json& object, const Fields& fields) {
  for (const Field& field : fields) {
    std::visit(ValueAppender(object, field.name), field.value);
  }
}

Json fieldsJson(const Fields& fields) {
  Json json = Json::object();
  appendFields(json, fields);
  return json;
}

Json descriptorJson(const DescriptorFields& descriptor) {
  Json json = {
      {"tag", descriptor.tag}, {"name", descriptor.name}, {"data", hexDigits(descriptor.payload)}};
  if (descriptor.isDecoded) {
    json["fields"] = fieldsJson(descriptor.fields);
  } else if (!descriptor.problem.empty()) {
    json["problem"] = descriptor.problem;
  }
  return json;
}

}  // namespace tevra::tools
