#include "tools/table_json.h"

#include "tools/fields_json.h"

namespace tevra::tools {

std::string tableJson(const TableFields& table) {
  return indentedJson(tableFieldsJson(table));
}

}  // namespace tevra::tools
