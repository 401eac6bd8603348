#include "tools/fields/field_text.h"

#include "tools/text/words.h"

namespace tevra::tools {
namespace {

/** Bytes that fit into a line with other fields. */
constexpr size_t kFewBytes = 8;

/** "257 (0x0101)" and "PMT" make "257 (0x0101, PMT)". */
std::string withMeaning(const Number& number) {
  if (number.meaning.empty()) {
    return number.shown;
  }
  if (number.shown.back() == ')') {
    return number.shown.substr(0, number.shown.size() - 1) + ", " + number.meaning + ")";
  }
  return number.shown + " (" + number.meaning + ")";
}

/** A value in a line; none of a value that stands in lines of its own. */
struct InLine {
  std::string operator()(const Number& number) const { return withMeaning(number); }
  std::string operator()(const Flag& flag) const { return flag.shown; }
  std::string operator()(const Text& text) const {
    return text.quoted ? "\"" + text.utf8 + "\"" : text.utf8;
  }
  std::string operator()(const Time& time) const { return time.shown; }
  std::string operator()(const Bytes& bytes) const {
    return bytes.data.empty() ? "none" : spacedDigits(bytes.data);
  }
  std::string operator()(const List& /*list*/) const { return {}; }
  std::string operator()(const DescriptorLoop& /*loop*/) const { return {}; }
};

}  // namespace

std::string spacedDigits(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += (text.empty() ? "" : " ") + hexDigits(std::string(1, byte));
  }
  return text;
}

bool isInLine(const Field& field) {
  if (const Bytes* bytes = std::get_if<Bytes>(&field.value)) {
    return bytes->data.size() <= kFewBytes;
  }
  return !std::holds_alternative<List>(field.value) &&
         !std::holds_alternative<DescriptorLoop>(field.value);
}

std::string valueText(const Field& field) {
  return std::visit(InLine(), field.value);
}

std::string fieldText(const Field& field) {
  const std::string value = valueText(field);
  return field.isLabelled ? labelOf(field.name) + " " + value : value;
}

std::vector<std::string> inLineParts(const Fields& fields) {
  std::vector<std::string> parts;
  for (const Field& field : fields) {
    if (isInLine(field)) {
      parts.push_back(fieldText(field));
    }
  }
  return parts;
}

}  // namespace tevra::tools
