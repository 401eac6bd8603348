#pragma once

#include "tools/fields/fields.h"
#include "tools/text/json_text.h"

namespace tevra::tools {

/** Adds the fields to an object, in their order; table_json.h says how each is written. */
void appendFields(Json& object, const Fields& fields);

/** An object of the fields alone. */
[[nodiscard]] Json fieldsJson(const Fields& fields);

/**
 * "tag", "name", "data", then "fields" of one that is decoded, or "problem" of one that contradicts
 * its syntax.
 */
[[nodiscard]] Json descriptorJson(const DescriptorFields& descriptor);

}  // namespace tevra::tools
