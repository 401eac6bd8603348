#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>

#include "tools/descriptors/field_reader.h"

namespace tevra::tools {

/** Reads one kind of descriptor's payload. */
using DescriptorSyntax = void (*)(FieldReader& in);

/** What private descriptors depend on: who has defined them. */
struct PrivateScope {
  /** Of the private data specifier descriptor that precedes them (EN 300 468, 6.2.31). */
  std::optional<uint32_t> specifier;
  /** format_identifiers registered in this loop or around it (ISO/IEC 13818-1, 2.6.8). */
  std::set<uint32_t> registrations;
};

/** One line of a table of syntaxes. */
struct TaggedSyntax {
  int tag;                  ///< descriptor_tag
  DescriptorSyntax syntax;  ///< never null
};

/** The syntax of `tag`; null where the table has none. */
template <size_t size>
[[nodiscard]] DescriptorSyntax syntaxIn(const std::array<TaggedSyntax, size>& table, int tag) {
  for (const TaggedSyntax& entry : table) {
    if (entry.tag == tag) {
      return entry.syntax;
    }
  }
  return nullptr;
}

/** What a private descriptor is to its owner. */
struct PrivateDescriptor {
  const char* name;         ///< "logical_channel_descriptor"
  DescriptorSyntax syntax;  ///< never null
};

// The syntaxes by family; null for a tag that is not of the family or whose syntax is not known.

/** ISO/IEC 13818-1, 2.6, and ISO/IEC 13818-6: tags 0x02 to 0x3F. */
[[nodiscard]] DescriptorSyntax mpegSyntax(int tag);
/** EN 300 468, 6.2: networks, bouquets and services. */
[[nodiscard]] DescriptorSyntax serviceSyntax(int tag);
/** EN 300 468, 6.2: delivery systems and their frequencies. */
[[nodiscard]] DescriptorSyntax deliverySyntax(int tag);
/** EN 300 468, 6.2: events and times. */
[[nodiscard]] DescriptorSyntax eventSyntax(int tag);
/** EN 300 468, 6.2: elementary streams. */
[[nodiscard]] DescriptorSyntax streamSyntax(int tag);

/** A user defined tag, 0x80 and above; nothing where the scope does not say whose it is. */
[[nodiscard]] std::optional<PrivateDescriptor> privateSyntax(int tag, const PrivateScope& scope);

}  // namespace tevra::tools
