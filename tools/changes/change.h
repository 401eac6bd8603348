#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/fields/fields.h"

namespace tevra::tools {

/** What a change is about: an entry of one of the table's loops, or the table itself. */
struct Subject {
  std::string noun;         ///< "service", "stream"; empty for the table itself
  std::vector<Fields> ids;  ///< of the entries, by the fields that identify them; none: the table
  std::string label;        ///< for people: 'service 101 "Canal Uno"'
};

/** A field, an entry or a descriptor before or after a change; nothing where it was not there. */
using Side = std::variant<std::monostate, Field, Fields, DescriptorFields>;

/** One difference between a table and the one before it. */
struct Change {
  /** Loops alone are reordered, and what a loop has more or less is added or removed. */
  enum class Kind { kAdded, kRemoved, kChanged, kReordered };

  Kind kind = Kind::kChanged;          ///< of what the next four members point at
  Subject subject;                     ///< of a changed entry, as it was before
  std::string descriptor;              ///< of the subject's: its name; empty where it is about none
  std::optional<Field> descriptorKey;  ///< what tells that from others of its name, if anything
  std::string field;                   ///< of the subject or its descriptor; empty: that as a whole
  Side from;                           ///< nothing where it was added or reordered
  Side to;                             ///< nothing where it was removed or reordered
  /** By how much a time moved; nothing where one of the two is not known. */
  std::optional<int64_t> seconds;
  /** Whether the subject is all entries that both tables have. */
  bool isOfAll = false;
};

/** A field of the subject's that holds something else; of a time, by how much it moved. */
[[nodiscard]] Change fieldChange(const Subject& subject, const Field& from, const Field& to);
/** An entry or a descriptor that came, went or is another as a whole. */
[[nodiscard]] Change wholeChange(Change::Kind kind, const Subject& subject, const Side& from,
                                 const Side& to);
/** A loop of the subject's that stands in another order. */
[[nodiscard]] Change otherOrder(const Subject& subject, const std::string& list);

/** The differences between two tables; tableChanges() says in which order. */
using Changes = std::vector<Change>;

}  // namespace tevra::tools
