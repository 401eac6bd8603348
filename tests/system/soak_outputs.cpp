#include "tests/system/soak_outputs.h"

#include <algorithm>
#include <utility>

#include "tests/system/soak_sections.h"
#include "tests/system/soak_streams.h"

namespace tevra::test {

using thrift::common_fpga::PIDItem;
using thrift::common_fpga::SPTSConfiguration;
using thrift::dvb_tables::Descriptor;
using thrift::dvb_tables::PAT;
using thrift::dvb_tables::PATProgram;
using thrift::dvb_tables::PMT;
using thrift::dvb_tables::PMTES;
using thrift::dvb_tables::SDT;
using thrift::dvb_tables::SDTService;
using thrift::in_module::OutputServiceDescription;
using thrift::in_module::SrvOutputRequest;
using thrift::in_module::TableStore;
using thrift::spts::LastNodeSettings;

namespace {

constexpr int32_t kMaxRestarts = 4;
constexpr int32_t kServiceTag = 0x48;

/** What the output's PMT is made from when its settings come with the request. */
PMT withoutCa(PMT pmt) {
  const auto strip = [](std::vector<Descriptor>& descriptors) {
    descriptors.erase(
        std::remove_if(descriptors.begin(), descriptors.end(),
                       [](const Descriptor& descriptor) { return descriptor.tag == kCaTag; }),
        descriptors.end());
  };
  strip(pmt.descriptors);
  for (PMTES& stream : pmt.esList) {
    strip(stream.descriptors);
  }
  return pmt;
}

/** The PID of the last programme with the number; 65535, which is -1 in 16 bits, without one. */
int32_t lastPidOf(const std::optional<PAT>& pat, int32_t number) {
  int32_t pid = 65535;
  for (const PATProgram& program : pat.value_or(PAT()).programs) {
    pid = program.programNumber == number ? program.pid : pid;
  }
  return pid;
}

/** The service_type of the first service with that id and a service descriptor. */
char typeOf(const std::optional<SDT>& sdt, int32_t serviceId) {
  for (const SDTService& service : sdt.value_or(SDT()).services) {
    for (const Descriptor& descriptor : service.descriptors) {
      if (service.serviceId == serviceId && descriptor.tag == kServiceTag) {
        return descriptor.data[0];
      }
    }
  }
  return 0;
}

std::string nameOf(const OutputServiceDescription& identity) {
  for (const SoakName& name : soakNames()) {
    if (name.utf8 == identity.serviceName) {
      return name.dvb.value_or("Noname" + std::to_string(identity.outputSID));
    }
  }
  return "";
}

PAT patOf(const OutputServiceDescription& identity, const std::optional<PAT>& input, int32_t pid) {
  PAT pat;
  pat.transportStreamId = identity.transportStreamId;
  pat.currentNext = input.value_or(PAT()).currentNext;
  pat.programs.emplace_back().programNumber = identity.outputSID;
  pat.programs.back().pid = pid;
  return pat;
}

SDT sdtOf(const OutputServiceDescription& identity, const std::optional<SDT>& input, char type) {
  const std::string name = nameOf(identity);
  SDT sdt;
  sdt.tableId = 0x42;
  sdt.transportStreamId = identity.transportStreamId;
  sdt.currentNext = input.value_or(SDT()).currentNext;
  sdt.originalNetworkId = identity.originalNetworkId;
  SDTService& service = sdt.services.emplace_back();
  service.serviceId = identity.outputSID;
  service.runningStatus = 4;
  Descriptor& descriptor = service.descriptors.emplace_back();
  descriptor.tag = kServiceTag;
  descriptor.data = std::string(1, type) + "\x08TEVRA SA" + static_cast<char>(name.size()) + name;
  return sdt;
}

/** Neither the version nor current_next_indicator makes a table another. */
template <class Table>
bool isSameContent(Table a, const Table& b) {
  a.version = b.version;
  a.currentNext = b.currentNext;
  return a == b;
}

/** Settings of an output that has none of its own: all of its list must filter for it to. */
LastNodeSettings combined(int32_t globalSID, const std::vector<LastNodeSettings>& list) {
  LastNodeSettings settings;
  settings.globalSID = globalSID;
  settings.uniqueSID = globalSID;
  const bool filters = !list.empty() && std::all_of(list.begin(), list.end(), [](const auto& node) {
    return node.audioFilter != 0;
  });
  if (filters) {
    settings.audioFilter = 1;
    for (const LastNodeSettings& node : list) {
      settings.audioLanguages.insert(settings.audioLanguages.end(), node.audioLanguages.begin(),
                                     node.audioLanguages.end());
    }
  }
  return settings;
}

}  // namespace

/** What a request works on; the PMT loses its CA descriptors once an output was served directly. */
struct SoakOutputs::Work {
  const SrvOutputRequest& request;
  const SoakTables& tables;
  SoakPids& pids;
  PMT pmt;
};

struct SoakOutputs::Built {
  const OutputServiceDescription& output;
  const LastNodeSettings& settings;
  const PMT& pmt;
  bool mapped;      ///< the answer names input PIDs, not output PIDs twice
  bool isFallback;  ///< the settings were made up: only then are there EMM PIDs
};

SoakOutputs::Answer SoakOutputs::answerTo(const SrvOutputRequest& request, const SoakTables& tables,
                                          SoakPids& pids) {
  Answer answer;
  const auto pmt = tables.pmts.find(request.inputSID);
  if (pmt != tables.pmts.end()) {
    Work work = {request, tables, pids, pmt->second};
    for (const auto& [key, output] : request.outputs) {
      serve(answer, output, work);
    }
  }
  tally_.empty += answer.empty() ? 1 : 0;
  return answer;
}

void SoakOutputs::serve(Answer& answer, const OutputServiceDescription& output, Work& work) {
  const auto found = work.request.lastNodeSettings.find(output.globalSID);
  const auto list = found == work.request.lastNodeSettings.end() ? std::vector<LastNodeSettings>()
                                                                 : found->second;
  serveFromList(answer, output, list, work);
  if (answer.count(output.globalSID) == 0) {
    ++tally_.fallback;
    const LastNodeSettings settings = combined(output.globalSID, list);
    answer[output.globalSID] = build({output, settings, work.pmt, true, true}, work);
  }
}

void SoakOutputs::serveFromList(Answer& answer, const OutputServiceDescription& output,
                                const std::vector<LastNodeSettings>& list, Work& work) {
  const PMT clear = withoutCa(work.pmt);
  for (const LastNodeSettings& node : list) {
    if (node.globalSID == output.globalSID) {
      ++tally_.direct;
      work.pids.save();
      work.pmt = clear;
      answer[node.globalSID] = build({output, node, clear, true, false}, work);
      return;
    }
  }
  for (const LastNodeSettings& node : list) {
    ++tally_.listed;
    work.pids.save();
    answer[node.globalSID] = build({output, node, clear, false, false}, work);
  }
}

SPTSConfiguration SoakOutputs::build(const Built& built, const Work& work) {
  const PMT filtered = withWantedAudio(built.pmt, built.settings);
  tally_.filtered += filtered.esList.size() < built.pmt.esList.size() ? 1 : 0;
  SPTSConfiguration output;
  output.pidItems = itemsOf(filtered, work.tables.pat.value_or(PAT()));
  if (built.isFallback && built.output.nextNode == 1 && work.tables.cat) {
    addEmmItems(output.pidItems, *work.tables.cat);
    ++tally_.withEmm;
  }
  synthesise(output, built, work, filtered);
  for (PIDItem& item : output.pidItems) {
    item.inputPid = built.mapped ? work.pids.inputOf(item.outputPid) : item.inputPid;
    tally_.unmapped += item.inputPid == 65535 ? 1 : 0;
  }
  return output;
}

void SoakOutputs::synthesise(SPTSConfiguration& output, const Built& built, const Work& work,
                             PMT filtered) {
  const int32_t inputSID = work.request.inputSID;
  const auto identity = built.output.nextNode == 0 ? built.output : OutputServiceDescription();
  const int32_t pmtPid = lastPidOf(work.tables.pat, inputSID);
  TableStore& store = stores_[inputSID];

  PAT pat = patOf(identity, work.tables.pat, pmtPid);
  const bool newPat = !isSameContent(pat, store.pat);
  pat.version = versionAfter(store.pat.version, newPat);
  store.pat = newPat ? pat : store.pat;

  SDT sdt = sdtOf(identity, work.tables.sdt, typeOf(work.tables.sdt, inputSID));
  const bool newSdt = !isSameContent(sdt, store.sdt);
  sdt.version = versionAfter(store.sdt.version, newSdt);
  store.sdt = newSdt ? sdt : store.sdt;

  filtered.programNumber = identity.outputSID;
  const bool newPmt = !isSameContent(filtered, store.pmt);
  filtered.version = versionAfter(store.pmt.version, newPmt);
  store.pmt = newPmt ? filtered : store.pmt;

  output.outputTables.outputParam1 = built.settings.uniqueSID;
  output.outputTables.patPackets = packetsOf(sectionOf(pat), 0x0000);
  output.outputTables.sdtPackets = packetsOf(sectionOf(sdt), 0x0011);
  output.outputTables.pmtPackets = packetsOf(sectionOf(filtered), pmtPid);
  output.outputTables.dvbTables.pat = pat;
  output.outputTables.dvbTables.sdt = sdt;
  output.outputTables.dvbTables.pmt = store.pmt;  // with the indicator it was stored with
  file_ = stores_;
}

int32_t SoakOutputs::versionAfter(int32_t version, bool changed) {
  tally_.moved += changed ? 1 : 0;
  tally_.kept += changed ? 0 : 1;
  tally_.wrapped += changed && version == 31 ? 1 : 0;
  return changed ? (version + 1) % 32 : version;
}

void SoakOutputs::restart() {
  stores_.clear();
  for (auto [inputSID, store] : file_) {
    if (++store.restartCounter <= kMaxRestarts) {
      stores_[inputSID] = store;
    } else {
      ++tally_.forgotten;
    }
  }
}

const std::vector<SoakName>& soakNames() {
  static const std::vector<SoakName> kNames = {
      {"", ""},
      {"Uno HD", "Uno HD"},
      {"Dos", "Dos"},
      {"Caf\u00e9",
       "Caf\xC2"
       "e"},                   // ISO/IEC 6937, the default table
      {"\u03a9", "\x03\xD9"},  // ISO/IEC 8859-7
      {"Uno \xC3\x28", std::nullopt},
      {std::string(300, 'x'), std::string(244, 'x')},
  };
  return kNames;
}

}  // namespace tevra::test
