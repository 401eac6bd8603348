#pragma once

#include "tools/fields/fields.h"

namespace tevra::tools {

///@{
/**
 * Whether two say the same. Fields: the same name and type, and the same value in the stream,
 * however it is shown; loops entry by entry, in order. Descriptors: the same tag and payload.
 */
[[nodiscard]] bool isSame(const Field& a, const Field& b);
[[nodiscard]] bool isSame(const Fields& a, const Fields& b);
[[nodiscard]] bool isSame(const DescriptorFields& a, const DescriptorFields& b);
///@}

}  // namespace tevra::tools
