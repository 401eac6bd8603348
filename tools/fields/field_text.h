#pragma once

#include <string>
#include <vector>

#include "tools/fields/fields.h"

namespace tevra::tools {

/** Bytes as pairs of digits with blanks between: "1a 2b". */
[[nodiscard]] std::string spacedDigits(const std::string& bytes);

/** Whether people read the value within a line: no loop, and no more than a few bytes. */
[[nodiscard]] bool isInLine(const Field& field);

/** A field's value within a line; empty for a loop. */
[[nodiscard]] std::string valueText(const Field& field);

/** The same behind the field's name, where the name is needed to understand the value. */
[[nodiscard]] std::string fieldText(const Field& field);

/** fieldText of each field that stands within a line. */
[[nodiscard]] std::vector<std::string> inLineParts(const Fields& fields);

}  // namespace tevra::tools
