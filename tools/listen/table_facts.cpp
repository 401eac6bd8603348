#include "tools/listen/table_facts.h"

#include "tools/changes/table_entries.h"
#include "tools/descriptors/descriptor_fields.h"
#include "tools/fields/field_text.h"
#include "tools/text/dvb_time.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int kLocalTimeOffset = 0x58;
constexpr size_t kMostLocalTimes = 3;

using Texts = std::vector<std::string>;

/** The first few of the local_time_offset_descriptors' countries: "local time ESP +02:00". */
Texts localTimes(const std::vector<Descriptor>& descriptors) {
  Texts texts;
  for (const DescriptorFields& descriptor : describe(descriptors).entries) {
    const List* offsets = descriptor.tag == kLocalTimeOffset && !descriptor.fields.empty()
                              ? std::get_if<List>(&descriptor.fields.front().value)
                              : nullptr;
    for (size_t i = 0; offsets != nullptr && i < offsets->entries.size(); ++i) {
      if (texts.size() == kMostLocalTimes) {
        texts.emplace_back("...");
        return texts;
      }
      const Fields& entry = offsets->entries[i];
      const Field* country = fieldAt(entry, {0, "country"});
      const Field* offset = fieldAt(entry, {0, "offset"});
      if (country != nullptr && offset != nullptr) {
        texts.push_back("local time " + valueText(*country) + " " + valueText(*offset));
      }
    }
  }
  return texts;
}

struct ContentTexts {
  Texts operator()(const PAT& pat) const { return {counted(pat.programs.size(), "programme")}; }
  Texts operator()(const CAT& cat) const { return {counted(cat.descriptors.size(), "descriptor")}; }
  Texts operator()(const TOT& tot) const { return localTimes(tot.descriptors); }
  Texts operator()(const PMT& pmt) const {
    return {counted(pmt.esList.size(), "stream"), "PCR on PID " + std::to_string(pmt.pcrPid)};
  }
  Texts operator()(const SDT& sdt) const { return {counted(sdt.services.size(), "service")}; }
  Texts operator()(const NIT& nit) const { return streams(nit.transportStreams.size()); }
  Texts operator()(const BAT& bat) const { return streams(bat.transportStreams.size()); }
  Texts operator()(const EIT& eit) const { return {counted(eit.events.size(), "event")}; }

 private:
  static Texts streams(size_t count) { return {counted(count, "transport stream")}; }
};

size_t memoryOfAll(const std::vector<Descriptor>& descriptors) {
  size_t bytes = descriptors.size() * sizeof(Descriptor);
  for (const Descriptor& descriptor : descriptors) {
    bytes += descriptor.data.size();
  }
  return bytes;
}

template <class Entry>
size_t memoryOfAll(const std::vector<Entry>& entries) {
  size_t bytes = entries.size() * sizeof(Entry);
  for (const Entry& entry : entries) {
    bytes += memoryOfAll(entry.descriptors);
  }
  return bytes;
}

struct MemoryOf {
  size_t operator()(const PAT& pat) const { return pat.programs.size() * sizeof(PATProgram); }
  size_t operator()(const CAT& cat) const { return memoryOfAll(cat.descriptors); }
  size_t operator()(const TOT& tot) const { return memoryOfAll(tot.descriptors); }
  size_t operator()(const PMT& pmt) const {
    return memoryOfAll(pmt.descriptors) + memoryOfAll(pmt.esList);
  }
  size_t operator()(const SDT& sdt) const { return memoryOfAll(sdt.services); }
  size_t operator()(const NIT& nit) const { return streams(nit); }
  size_t operator()(const BAT& bat) const { return streams(bat); }
  size_t operator()(const EIT& eit) const { return memoryOfAll(eit.events); }

 private:
  template <class Table>
  static size_t streams(const Table& table) {
    return memoryOfAll(table.descriptors) + memoryOfAll(table.transportStreams);
  }
};

}  // namespace

std::vector<std::string> contentTexts(const SiTable& table) {
  return std::visit(ContentTexts(), table);
}

std::optional<int64_t> secondsBehind(const SiTable& table,
                                     std::chrono::system_clock::time_point now) {
  const TOT* tot = std::get_if<TOT>(&table);
  const auto time = tot == nullptr ? std::nullopt : streamTime(tot->utcTime);
  if (!time) {
    return std::nullopt;
  }
  return std::chrono::system_clock::to_time_t(now) + kUnixEpoch - *time;
}

size_t memoryOf(const SiTable& table) {
  return sizeof(SiTable) + std::visit(MemoryOf(), table);
}

}  // namespace tevra::tools
