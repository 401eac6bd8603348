#pragma once

#include "tools/fields.h"

namespace tevra::tools {

/** Whether two fields have the same name and value; descriptors by tag and payload. */
[[nodiscard]] bool isSame(const Field& a, const Field& b);
[[nodiscard]] bool isSame(const Fields& a, const Fields& b);
[[nodiscard]] bool isSame(const DescriptorFields& a, const DescriptorFields& b);

}  // namespace tevra::tools
