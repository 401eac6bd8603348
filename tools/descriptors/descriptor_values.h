#pragma once

#include <string>
#include <vector>

#include "records/records.h"

/**
 * @file
 * The few values of a descriptor loop that the tool itself goes by; descriptor_fields.h decodes all
 * for printing. A descriptor that is cut short gives what it has. Texts are UTF-8.
 */
namespace tevra::tools {

/** The first of the loop with the tag; null where there is none. */
[[nodiscard]] const Descriptor* firstWithTag(const std::vector<Descriptor>& descriptors, int tag);

/** What a service descriptor (EN 300 468, 6.2.33) says. */
struct ServiceNames {
  int type = 0;          ///< service_type
  std::string provider;  ///< service_provider_name
  std::string name;      ///< service_name
};
/** Of the first service descriptor; as constructed without one of 3 bytes at least. */
[[nodiscard]] ServiceNames serviceNames(const std::vector<Descriptor>& descriptors);

/** Of the first network name descriptor (EN 300 468, 6.2.27); empty without one. */
[[nodiscard]] std::string networkName(const std::vector<Descriptor>& descriptors);

/** Of the first short event descriptor (EN 300 468, 6.2.37); empty without one. */
[[nodiscard]] std::string eventName(const std::vector<Descriptor>& descriptors);

/** Language codes of the ISO 639 language descriptors (ISO/IEC 13818-1, 2.6.18), in order. */
[[nodiscard]] std::vector<std::string> languages(const std::vector<Descriptor>& descriptors);

/** Those of the teletext and subtitling descriptors (EN 300 468, 6.2.43, 6.2.48 and 6.2.41). */
[[nodiscard]] std::vector<std::string> textLanguages(const std::vector<Descriptor>& descriptors);

/** A PID that a CA descriptor (ISO/IEC 13818-1, 2.6.16) names. */
struct CaReference {
  int systemId = 0;  ///< CA_system_ID
  int pid = 0;       ///< CA_PID: of ECMs in a PMT, of EMMs in a CAT
};
/** Those of the loop, in order; descriptors that are cut short name none. */
[[nodiscard]] std::vector<CaReference> caReferences(const std::vector<Descriptor>& descriptors);

/**
 * Whether people hear the stream: MPEG audio, AAC, ATSC's AC-3, or a private stream with the
 * descriptor of an audio codec.
 */
[[nodiscard]] bool isAudio(const PMTES& stream);

}  // namespace tevra::tools
