#pragma once

#include <string>

namespace tevra::tools {

/**
 * The name of a descriptor by its tag: ISO/IEC 13818-1, table 2-45, up to 0x3F; EN 300 468,
 * table 12, up to 0x7F. "user_defined_descriptor" from 0x80 on, "reserved_descriptor" where the
 * standards have none.
 */
[[nodiscard]] std::string descriptorName(int tag);

/** EN 300 468, table 109: by descriptor_tag_extension; empty where it has none. */
[[nodiscard]] std::string extensionDescriptorName(int tagExtension);

}  // namespace tevra::tools
