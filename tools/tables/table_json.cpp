#include "tools/tables/table_json.h"

#include "tools/fields/fields_json.h"

namespace tevra::tools {

Json tableFieldsJson(const TableFields& table) {
  Json json;
  json["table"] = table.name;
  appendFields(json, table.fields);
  return json;
}

std::string tableJson(const TableFields& table) {
  return indentedJson(tableFieldsJson(table));
}

}  // namespace tevra::tools
