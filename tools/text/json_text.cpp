#include "tools/text/json_text.h"

namespace tevra::tools {
namespace {

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

std::string text(const Json& json, int indent) {
  return json.dump(indent, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace);
}

}  // namespace

std::string indentedJson(const Json& json) {
  return text(json, kIndent);
}

std::string jsonLine(const Json& json) {
  return text(json, kOneLine);
}

}  // namespace tevra::tools
