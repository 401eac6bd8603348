#include "tools/changes/change_text.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tools/changes/table_entries.h"
#include "tools/fields/field_text.h"
#include "tools/text/dvb_time.h"

namespace tevra::tools {
namespace {

using Kind = Change::Kind;

/** Their fields say by themselves what they are. */
constexpr std::array<std::string_view, 3> kUnnamedDescriptors = {
    "service_descriptor", "ISO_639_language_descriptor", "short_event_descriptor"};
constexpr std::array<std::string_view, 2> kToldAbove = {"version", "utcTime"};

template <size_t size>
bool contains(const std::array<std::string_view, size>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool isOfTable(const Change& change) {
  return change.subject.ids.empty();
}
bool isOfDescriptor(const Change& change) {
  return !change.descriptor.empty();
}

std::string descriptorLabel(const Change& change) {
  return change.descriptorKey ? "CA system " + valueText(*change.descriptorKey) : change.descriptor;
}

/** Of a field with a number that the standard names before and after, the names. */
std::string sidesText(const Field& from, const Field& to) {
  const auto* before = std::get_if<Number>(&from.value);
  const auto* after = std::get_if<Number>(&to.value);
  const bool areNamed = before != nullptr && after != nullptr && !before->meaning.empty() &&
                        !after->meaning.empty() && before->meaning != after->meaning;
  return areNamed ? before->meaning + " -> " + after->meaning
                  : shortened(valueText(from)) + " -> " + shortened(valueText(to));
}

std::string fieldChangeText(const Change& change) {
  const auto& from = std::get<Field>(change.from);
  const auto& to = std::get<Field>(change.to);
  std::string text = (to.isLabelled ? labelOf(to.name) + " " : "") + sidesText(from, to);
  if (isOfDescriptor(change) && !contains(kUnnamedDescriptors, change.descriptor)) {
    text.insert(0, descriptorLabel(change) + " ");
  }
  return text + (change.seconds ? " (" + spanText(*change.seconds) + ")" : "");
}

std::string briefOfSide(const Side& side) {
  const auto* descriptor = std::get_if<DescriptorFields>(&side);
  return descriptor == nullptr ? "" : briefOf(*descriptor);
}

/** A descriptor that is there as a whole or not: of the table itself, or of one of its entries. */
std::string wholeDescriptorText(const Change& change) {
  const std::string label = descriptorLabel(change);
  const std::string before = briefOfSide(change.from);
  const std::string after = briefOfSide(change.to);
  if (change.kind == Kind::kChanged) {
    return label + (before == after ? " changed" : ": " + before + " -> " + after);
  }
  const std::string brief = change.kind == Kind::kAdded ? after : before;
  if (isOfTable(change)) {
    return label + (brief.empty() ? "" : ": " + brief);
  }
  return label + (change.kind == Kind::kAdded ? " added" : " removed") +
         (brief.empty() ? "" : " (" + brief + ")");
}

std::string shiftText(const Change& change) {
  return (change.isOfAll ? "all " : "") + change.subject.label + " moved by " +
         spanText(*change.seconds);
}

/** What changed, without what it is about. */
std::string partText(const Change& change) {
  if (change.kind == Kind::kReordered) {
    const EntryRule* rule = entryRule(change.field);
    return (rule == nullptr ? change.field : rule->noun + std::string("s")) + " in another order";
  }
  return change.field.empty() ? wholeDescriptorText(change) : fieldChangeText(change);
}

bool isWholeEntry(const Change& change) {
  return std::holds_alternative<Fields>(change.from) || std::holds_alternative<Fields>(change.to);
}

ChangeLine wholeEntryLine(const Change& change) {
  const bool isAdded = change.kind == Kind::kAdded;
  const auto& entry = std::get<Fields>(isAdded ? change.to : change.from);
  const std::string brief = briefOf(change.subject, entry);
  return {isAdded ? '+' : '-', change.subject.label + (brief.empty() ? "" : ": " + brief)};
}

char signOf(const Change& change) {
  const bool isWhole = isOfTable(change) && change.field.empty();
  if (!isWhole || change.kind == Kind::kChanged) {
    return '~';
  }
  return change.kind == Kind::kAdded ? '+' : '-';
}

/** Whether `change` goes on in the line of `last`, which it follows. */
bool isContinued(const Change& last, const Change& change) {
  const auto isPart = [](const Change& one) {
    return one.subject.ids.size() == 1 && !isWholeEntry(one);
  };
  return isPart(last) && isPart(change) && last.subject.ids.front() == change.subject.ids.front();
}

ChangeLine lineOf(const Change& change) {
  if (isWholeEntry(change)) {
    return wholeEntryLine(change);
  }
  if (change.subject.ids.size() > 1) {
    return {'~', shiftText(change)};
  }
  const std::string label = isOfTable(change) ? "" : change.subject.label + ": ";
  return {signOf(change), label + partText(change)};
}

}  // namespace

std::vector<ChangeLine> changeLines(const Changes& changes) {
  std::vector<ChangeLine> lines;
  const Change* last = nullptr;
  for (const Change& change : changes) {
    if (isOfTable(change) && contains(kToldAbove, change.field)) {
      continue;
    }
    if (last != nullptr && isContinued(*last, change)) {
      lines.back().text += ", " + partText(change);
    } else {
      lines.push_back(lineOf(change));
    }
    last = &change;
  }
  return lines;
}

}  // namespace tevra::tools
