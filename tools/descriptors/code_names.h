#pragma once

#include <string>

/**
 * @file
 * Names that the standards give to coded values; a ...Name is empty for a value without one.
 */
namespace tevra::tools {

/** ISO/IEC 13818-1, table 2-34, and the commonest from 0x80 on, which are the user's. */
[[nodiscard]] std::string streamTypeName(int streamType);

/** EN 300 468, table 6: of a service or an event. */
[[nodiscard]] std::string runningStatusName(int runningStatus);
/** EN 300 468, 6.2.33: service_type. */
[[nodiscard]] std::string serviceTypeName(int serviceType);
/** EN 300 468, table 29: content_nibble_level_1 in the upper, level_2 in the lower four bits. */
[[nodiscard]] std::string contentName(int nibbles);
/** EN 300 468, table 26: stream_content (with its extension above it) and component_type. */
[[nodiscard]] std::string componentName(int streamContent, int componentType);
/** EN 300 468, table 26: component_type of subtitles. */
[[nodiscard]] std::string subtitlingTypeName(int subtitlingType);
/** ETSI TS 101 154, AAC_type: component_type of stream_content 6. */
[[nodiscard]] std::string aacTypeName(int aacType);
/** EN 300 468, table D.1: the codec's bits of an (enhanced) AC-3 component_type. */
[[nodiscard]] std::string ac3ComponentName(int componentType);

}  // namespace tevra::tools
