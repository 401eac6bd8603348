#pragma once

#include <cstdint>

namespace tevra {

/**
 * True for the stream types (ISO/IEC 13818-1, table 2-34) that a conflict-free PMT keeps: MPEG-1/2
 * video and audio, private PES, AAC, MPEG-4 visual, LATM AAC, H.264 and HEVC. The list is fixed:
 * docs/contract.md, "Stream types".
 */
[[nodiscard]] bool isCarriedStreamType(int32_t streamType);

}  // namespace tevra
