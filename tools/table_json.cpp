#include "tools/table_json.h"

#include "tools/fields_json.h"

namespace tevra::tools {
namespace {

constexpr int kIndent = 2;

}  // namespace

std::string tableJson(const TableFields& table) {
  return tableFieldsJson(table).dump(kIndent, ' ', /*ensure_ascii=*/false,
                                     nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace tevra::tools
