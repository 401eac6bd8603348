#pragma once

#include <string>
#include <vector>

#include "records/records.h"

namespace tevra::tools {

/** What a service descriptor (EN 300 468, 6.2.33) says, texts in UTF-8. */
struct ServiceNames {
  int type = 0;          ///< service_type
  std::string provider;  ///< service_provider_name
  std::string name;      ///< service_name
};

/**
 * From the first service descriptor of the loop; as constructed when there is none or it is cut
 * short.
 */
[[nodiscard]] ServiceNames serviceNames(const std::vector<Descriptor>& descriptors);

/**
 * The language codes of the loop's ISO 639 language descriptors (ISO/IEC 13818-1, 2.6.18), in
 * order.
 */
[[nodiscard]] std::vector<std::string> languages(const std::vector<Descriptor>& descriptors);

/**
 * Whether people hear the stream: MPEG audio, AAC, or a private stream with the descriptor of an
 * audio codec.
 */
[[nodiscard]] bool isAudio(const PMTES& stream);

}  // namespace tevra::tools
