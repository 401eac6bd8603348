#pragma once

#include "tools/json_text.h"
#include "tools/table_fields.h"

namespace tevra::tools {

/** The fields as members of an object, in their order; table_json.h says how each is written. */
[[nodiscard]] Json fieldsJson(const Fields& fields);

/**
 * "tag", "name", "data", then "fields" of one that is decoded, or "problem" of one that contradicts
 * its syntax.
 */
[[nodiscard]] Json descriptorJson(const DescriptorFields& descriptor);

/** "table", its name, then its fields. */
[[nodiscard]] Json tableFieldsJson(const TableFields& table);

}  // namespace tevra::tools
