#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/changes/change.h"
#include "tools/fields/fields.h"

namespace tevra::tools {

/** Where a value stands: in an entry itself, or in its first descriptor with a tag. */
struct FieldPath {
  int tag;            ///< 0: in the entry itself
  const char* field;  ///< its name; null: there is no such value
};

/** A field that helps to identify an entry. */
struct EntryKey {
  const char* field;  ///< its name
  const char* words;  ///< for people, what stands before its value
};

/** How the entries of one of the tables' loops are told apart and named. */
struct EntryRule {
  const char* list;              ///< the loop's name in the table's fields
  const char* noun;              ///< of an entry, for people; no other rule has it
  std::vector<EntryKey> keys;    ///< together they identify an entry
  FieldPath name;                ///< what people call it
  std::vector<FieldPath> brief;  ///< what describes it in a line
  /** Whether an entry with another key and all else equal is the same one. */
  bool mayBeRenumbered;
};

/** The rule of a loop; null for one of which there is none. */
[[nodiscard]] const EntryRule* entryRule(const std::string& list);

/** The value at the end of the path, also within a loop of the descriptor; null without one. */
[[nodiscard]] const Field* fieldAt(const Fields& entry, const FieldPath& path);

///@{
/** An entry by the fields that identify it, and by all its others. */
[[nodiscard]] Fields keyFields(const EntryRule& rule, const Fields& entry);
[[nodiscard]] Fields contentFields(const EntryRule& rule, const Fields& entry);
///@}
/** A subject of this one entry, with its label. */
[[nodiscard]] Subject subjectOf(const EntryRule& rule, const Fields& entry);

/** What there is to say about an entry in a line: "digital radio, running". */
[[nodiscard]] std::string briefOf(const Subject& subject, const Fields& entry);
/** The same of a descriptor: the beginning of what it says, empty if that is not known. */
[[nodiscard]] std::string briefOf(const DescriptorFields& descriptor);

/** What tells a descriptor from others with its tag: the system of a CA descriptor. */
[[nodiscard]] std::optional<Field> descriptorKey(const DescriptorFields& descriptor);

/** The beginning of UTF-8 text that is too long for a part of a line. */
[[nodiscard]] std::string shortened(const std::string& text);

}  // namespace tevra::tools
