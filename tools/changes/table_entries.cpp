#include "tools/changes/table_entries.h"

#include <algorithm>
#include <iterator>

#include "tools/fields/field_text.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int kOwn = 0;
constexpr int kCa = 0x09;
constexpr int kLanguage = 0x0A;
constexpr int kService = 0x48;
constexpr int kShortEvent = 0x4D;
constexpr int kTeletext = 0x56;
constexpr int kSubtitling = 0x59;
constexpr size_t kBriefWidth = 60;
/** Not worth a word. */
constexpr const char* kUndefined = "undefined";

const std::vector<EntryRule>& rules() {
  static const std::vector<EntryRule> kRules = {
      {"programs",
       "programme",
       {{"programNumber", "programme "}},
       {kOwn, nullptr},
       {{kOwn, "pid"}},
       false},
      {"esList",
       "stream",
       {{"pid", "stream PID "}},
       {kOwn, "streamType"},
       {{kLanguage, "language"},
        {kTeletext, "language"},
        {kSubtitling, "language"},
        {kCa, "caSystemId"},
        {kCa, "caPid"}},
       true},
      {"services",
       "service",
       {{"serviceId", "service "}},
       {kService, "serviceName"},
       {{kService, "serviceType"}, {kOwn, "runningStatus"}, {kOwn, "freeCA"}},
       false},
      {"transportStreams",
       "transport stream",
       {{"transportStreamId", "transport stream "}, {"originalNetworkId", " of network "}},
       {kOwn, nullptr},
       {},
       false},
      {"events",
       "event",
       {{"eventId", "event "}},
       {kShortEvent, "eventName"},
       {{kOwn, "startTime"}, {kOwn, "duration"}, {kOwn, "freeCA"}},
       false},
  };
  return kRules;
}

const Field* fieldNamed(const Fields& fields, const std::string& name) {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const Field& field) { return field.name == name; });
  return found == fields.end() ? nullptr : &*found;
}

/** In the fields, else in the first entry of their first loop. */
const Field* fieldWithin(const Fields& fields, const std::string& name) {
  if (const Field* field = fieldNamed(fields, name)) {
    return field;
  }
  const List* list = fields.empty() ? nullptr : std::get_if<List>(&fields.front().value);
  return list == nullptr || list->entries.empty() ? nullptr
                                                  : fieldNamed(list->entries.front(), name);
}

const DescriptorFields* descriptorWith(const Fields& entry, int tag) {
  const Field* field = fieldNamed(entry, "descriptors");
  const auto* loop = field == nullptr ? nullptr : std::get_if<DescriptorLoop>(&field->value);
  if (loop == nullptr) {
    return nullptr;
  }
  const auto found =
      std::find_if(loop->entries.begin(), loop->entries.end(),
                   [tag](const DescriptorFields& descriptor) { return descriptor.tag == tag; });
  return found == loop->entries.end() ? nullptr : &*found;
}

/** Whether the standard's name of a number says enough without the number; not of an identifier. */
bool hasShortName(const Field& field) {
  const auto* number = std::get_if<Number>(&field.value);
  return number != nullptr && !number->meaning.empty() && number->shown.back() != ')';
}

std::string shortText(const Field& field) {
  return hasShortName(field) ? std::get<Number>(field.value).meaning : valueText(field);
}

std::string decimal(const Field& field) {
  const auto* number = std::get_if<Number>(&field.value);
  return number == nullptr ? valueText(field) : std::to_string(number->value);
}

/** What a line on an entry says of one of its fields; nothing for a flag that is not set. */
std::string briefPart(const Field& field) {
  if (const Flag* flag = std::get_if<Flag>(&field.value)) {
    return flag->value ? flag->shown : "";
  }
  const bool isBareNumber =
      std::holds_alternative<Number>(field.value) && !hasShortName(field) && field.isLabelled;
  return isBareNumber ? fieldText(field) : shortText(field);
}

void appendParts(std::vector<std::string>& parts, const Fields& fields) {
  for (const Field& field : fields) {
    if (const List* list = std::get_if<List>(&field.value)) {
      for (const Fields& entry : list->entries) {
        appendParts(parts, entry);
      }
    } else if (isInLine(field) && shortText(field) != kUndefined) {
      parts.push_back(hasShortName(field) ? shortText(field) : fieldText(field));
    }
  }
}

bool isKey(const EntryRule& rule, const Field& field) {
  return std::any_of(rule.keys.begin(), rule.keys.end(),
                     [&](const EntryKey& key) { return key.field == field.name; });
}

template <class Condition>
Fields fieldsThat(const Fields& entry, Condition condition) {
  Fields fields;
  std::copy_if(entry.begin(), entry.end(), std::back_inserter(fields), condition);
  return fields;
}

}  // namespace

const EntryRule* entryRule(const std::string& list) {
  const auto found = std::find_if(rules().begin(), rules().end(),
                                  [&](const EntryRule& rule) { return rule.list == list; });
  return found == rules().end() ? nullptr : &*found;
}

const Field* fieldAt(const Fields& entry, const FieldPath& path) {
  if (path.field == nullptr) {
    return nullptr;
  }
  if (path.tag == kOwn) {
    return fieldNamed(entry, path.field);
  }
  const DescriptorFields* descriptor = descriptorWith(entry, path.tag);
  return descriptor == nullptr ? nullptr : fieldWithin(descriptor->fields, path.field);
}

Fields keyFields(const EntryRule& rule, const Fields& entry) {
  return fieldsThat(entry, [&](const Field& field) { return isKey(rule, field); });
}

Fields contentFields(const EntryRule& rule, const Fields& entry) {
  return fieldsThat(entry, [&](const Field& field) { return !isKey(rule, field); });
}

Subject subjectOf(const EntryRule& rule, const Fields& entry) {
  Subject subject = {rule.noun, {keyFields(rule, entry)}, {}};
  for (const EntryKey& key : rule.keys) {
    const Field* field = fieldNamed(entry, key.field);
    subject.label += key.words + (field == nullptr ? "" : decimal(*field));
  }
  if (const Field* name = fieldAt(entry, rule.name)) {
    const auto* text = std::get_if<Text>(&name->value);
    if (text == nullptr) {
      subject.label += " (" + shortText(*name) + ")";
    } else if (!text->utf8.empty()) {
      subject.label += " " + valueText(*name);
    }
  }
  return subject;
}

std::string briefOf(const Subject& subject, const Fields& entry) {
  const auto rule = std::find_if(rules().begin(), rules().end(), [&](const EntryRule& candidate) {
    return candidate.noun == subject.noun;
  });
  if (rule == rules().end()) {
    return {};
  }
  std::vector<std::string> parts;
  for (const FieldPath& path : rule->brief) {
    const Field* field = fieldAt(entry, path);
    const std::string part = field == nullptr ? "" : briefPart(*field);
    if (!part.empty() && part != kUndefined) {
      parts.push_back(part);
    }
  }
  return joined(parts, ", ");
}

std::string briefOf(const DescriptorFields& descriptor) {
  std::vector<std::string> parts;
  appendParts(parts, descriptor.fields);
  if (descriptorKey(descriptor)) {
    parts.erase(parts.begin());  // stands before the brief
  }
  return shortened(joined(parts, ", "));
}

std::optional<Field> descriptorKey(const DescriptorFields& descriptor) {
  const Field* system =
      descriptor.tag == kCa ? fieldNamed(descriptor.fields, "caSystemId") : nullptr;
  return system == nullptr ? std::nullopt : std::make_optional(*system);
}

std::string shortened(const std::string& text) {
  if (displayWidth(text) <= kBriefWidth) {
    return text;
  }
  size_t end = 0;
  for (size_t width = 0; width < kBriefWidth; ++width) {
    do {
      ++end;
    } while (end < text.size() && isContinuation(text[end]));
  }
  return text.substr(0, end) + "...";
}

}  // namespace tevra::tools
