#include "tests/system/soak_streams.h"

#include <algorithm>
#include <set>

#include "tests/system/soak_pids.h"

namespace tevra::test {

using thrift::common_fpga::PIDItem;
using thrift::dvb_tables::CAT;
using thrift::dvb_tables::Descriptor;
using thrift::dvb_tables::PAT;
using thrift::dvb_tables::PATProgram;
using thrift::dvb_tables::PMT;
using thrift::dvb_tables::PMTES;
using thrift::spts::AudioLanguage;
using thrift::spts::LastNodeSettings;

namespace {

enum Attribute : int32_t { kPmt = 0x02, kPcr = 0x04, kEs = 0x08, kEcm = 0x10, kEmm = 0x20 };

bool isAudio(const PMTES& stream) {
  static const std::set<int32_t> kCodecTags = {0x6A, 0x81, 0x7A, 0x73};
  const bool hasCodec = std::any_of(
      stream.descriptors.begin(), stream.descriptors.end(),
      [](const Descriptor& descriptor) { return kCodecTags.count(descriptor.tag) == 1; });
  return stream.streamType == 3 || stream.streamType == 4 || (stream.streamType == 6 && hasCodec);
}

std::string languageOf(const PMTES& stream) {
  std::string language = "ndl";
  for (const Descriptor& descriptor : stream.descriptors) {
    if (descriptor.tag != kLanguageTag) {
      continue;
    }
    const bool isWhole = !descriptor.data.empty() && descriptor.data.size() % 4 == 0;
    language = isWhole ? descriptor.data.substr(0, 3) : "ndl";
  }
  return language;
}

void addItem(std::vector<PIDItem>& items, int32_t pid, Attribute attribute) {
  auto item = std::find_if(items.begin(), items.end(),
                           [&](const PIDItem& known) { return known.inputPid == pid; });
  if (item == items.end()) {
    item = items.emplace(items.end());
    item->inputPid = pid;
    item->outputPid = pid;
  }
  item->attributes |= attribute;
}

void addCaItems(std::vector<PIDItem>& items, const std::vector<Descriptor>& descriptors,
                Attribute attribute) {
  for (const Descriptor& descriptor : descriptors) {
    const auto pid = descriptor.tag == kCaTag ? caPidOf(descriptor) : std::nullopt;
    if (pid) {
      addItem(items, *pid, attribute);
    }
  }
}

}  // namespace

PMT withWantedAudio(const PMT& pmt, const LastNodeSettings& settings) {
  PMT filtered = pmt;
  filtered.esList.clear();
  for (const PMTES& stream : pmt.esList) {
    const auto& wanted = settings.audioLanguages;
    const bool isWanted = std::any_of(
        wanted.begin(), wanted.end(),
        [&](const AudioLanguage& language) { return language.language == languageOf(stream); });
    if (settings.audioFilter == 0 || !isAudio(stream) || isWanted) {
      filtered.esList.push_back(stream);
    }
  }
  return filtered;
}

std::vector<PIDItem> itemsOf(const PMT& pmt, const PAT& pat) {
  constexpr int32_t kNotInPat = 0x666;
  const auto program = std::find_if(
      pat.programs.begin(), pat.programs.end(),
      [&](const PATProgram& entry) { return entry.programNumber == pmt.programNumber; });
  std::vector<PIDItem> items;
  addItem(items, program == pat.programs.end() ? kNotInPat : program->pid, kPmt);
  addItem(items, pmt.pcrPid, kPcr);
  addCaItems(items, pmt.descriptors, kEcm);
  for (const PMTES& stream : pmt.esList) {
    addItem(items, stream.pid, kEs);
    addCaItems(items, stream.descriptors, kEcm);
  }
  return items;
}

void addEmmItems(std::vector<PIDItem>& items, const CAT& cat) {
  addCaItems(items, cat.descriptors, kEmm);
}

const std::vector<std::string>& soakLanguages() {
  // The last is no code.
  static const std::vector<std::string> kLanguages = {"eng", "spa", "fra", "fre",
                                                      "deu", "ENG", "12a"};
  return kLanguages;
}

}  // namespace tevra::test
