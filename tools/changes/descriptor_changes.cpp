#include "tools/changes/descriptor_changes.h"

#include <utility>

#include "tools/changes/matching.h"
#include "tools/changes/table_entries.h"

namespace tevra::tools {
namespace {

using Kind = Change::Kind;
using Descriptors = std::vector<DescriptorFields>;
using Differing = std::vector<std::pair<const Field*, const Field*>>;

bool collect(Differing& differing, const Field& from, const Field& to);

/** The same of two lists, of fields or of a loop's entries. */
template <class Element>
bool collect(Differing& differing, const std::vector<Element>& from,
             const std::vector<Element>& to) {
  bool isAlike = from.size() == to.size();
  for (size_t i = 0; isAlike && i < to.size(); ++i) {
    isAlike = collect(differing, from[i], to[i]);
  }
  return isAlike;
}

/** Gathers the values that differ; false where the two do not have the same ones. */
bool collect(Differing& differing, const Field& from, const Field& to) {
  if (from == to) {
    return true;
  }
  if (from.name != to.name || from.value.index() != to.value.index() ||
      std::holds_alternative<DescriptorLoop>(to.value)) {
    return false;
  }
  if (const List* list = std::get_if<List>(&to.value)) {
    return collect(differing, std::get<List>(from.value).entries, list->entries);
  }
  differing.emplace_back(&from, &to);
  return true;
}

/** Says whose the change is. */
Change ofDescriptor(const DescriptorFields& descriptor, Change change) {
  change.descriptor = descriptor.name;
  change.descriptorKey = descriptorKey(descriptor);
  return change;
}

void appendChange(Changes& changes, const Subject& subject, const DescriptorFields& from,
                  const DescriptorFields& to) {
  if (from == to) {
    return;
  }
  Differing differing;
  const bool isComparable = from.isDecoded && to.isDecoded;
  if (!isComparable || !collect(differing, from.fields, to.fields) || differing.empty()) {
    changes.push_back(ofDescriptor(to, wholeChange(Kind::kChanged, subject, from, to)));
    return;
  }
  for (const auto& [before, after] : differing) {
    changes.push_back(ofDescriptor(to, fieldChange(subject, *before, *after)));
  }
}

/** First those that are equal, then what may be the same one with another payload. */
Matching<DescriptorFields> matchDescriptors(const Descriptors& from, const Descriptors& to) {
  return match(
      from, to,
      [](const DescriptorFields& descriptor) {
        return std::pair(descriptor.tag, descriptor.payload);
      },
      [](const DescriptorFields& descriptor) {
        return std::pair(descriptor.tag, descriptorKey(descriptor));
      });
}

}  // namespace

void appendDescriptorChanges(Changes& changes, const Subject& subject, const DescriptorLoop& from,
                             const DescriptorLoop& to) {
  const auto matching = matchDescriptors(from.entries, to.entries);
  for (const DescriptorFields* descriptor : matching.removed) {
    changes.push_back(
        ofDescriptor(*descriptor, wholeChange(Kind::kRemoved, subject, *descriptor, {})));
  }
  for (const auto& [before, after] : matching.elements) {
    if (before != nullptr) {
      appendChange(changes, subject, *before, *after);
    }
  }
  for (const auto& [before, after] : matching.elements) {
    if (before == nullptr) {
      changes.push_back(ofDescriptor(*after, wholeChange(Kind::kAdded, subject, {}, *after)));
    }
  }
  if (matching.isReordered) {
    changes.push_back(otherOrder(subject, "descriptors"));
  }
}

}  // namespace tevra::tools
