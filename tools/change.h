#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/fields.h"

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
  enum class Kind { kAdded, kRemoved, kChanged, kReordered };

  Kind kind = Kind::kChanged;
  Subject subject;
  std::string descriptor;              ///< of the subject's: its name; empty where it is about none
  std::optional<Field> descriptorKey;  ///< what tells that from others of its name, if anything
  std::string field;                   ///< of the subject or its descriptor; empty: that as a whole
  Side from;
  Side to;
  /** By how much a time moved; nothing where one of the two is not known. */
  std::optional<int64_t> seconds;
  /** Whether the subject is all entries that both tables have. */
  bool isOfAll = false;
};

using Changes = std::vector<Change>;

}  // namespace tevra::tools
