#include "tools/report/facts/service_streams.h"

#include <algorithm>
#include <set>
#include <string>
#include <tuple>

#include "tools/descriptors/descriptor_values.h"
#include "tools/report/facts/stream_traits.h"
#include "tools/stream/ts_packet.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

std::string caText(const char* what, int systemId) {
  return std::string(what) + " of " + hex(systemId, 4);
}

/** What the CAT and the PAT say of PIDs that are no service's. */
struct NamedPids {
  std::map<int, std::string> emms;
  std::set<int> nits;
};

NamedPids namedPids(const TableJournal& journal) {
  NamedPids named;
  for (const CaReference& reference :
       caReferences(journal.cat() ? journal.cat()->descriptors : std::vector<Descriptor>{})) {
    if (reference.pid != kNullPid) {
      named.emms.emplace(reference.pid, caText("EMM", reference.systemId));
    }
  }
  for (const PATProgram& program :
       journal.pat() ? journal.pat()->programs : std::vector<PATProgram>{}) {
    if (program.programNumber == 0) {
      named.nits.insert(program.pid);
    }
  }
  return named;
}

InputStream otherStream(int pid, const NamedPids& named) {
  if (const auto entry = named.emms.find(pid); entry != named.emms.end()) {
    return {pid, StreamKind::kConditionalAccess, entry->second, {}, /*hasPcr=*/false};
  }
  if (pid == kNullPid) {
    return {pid, StreamKind::kStuffing, "null packets", {}, /*hasPcr=*/false};
  }
  const std::string name = reservedPidName(pid);
  if (!name.empty() || named.nits.count(pid) != 0) {
    return {pid, StreamKind::kTables, name.empty() ? "NIT" : name, {}, /*hasPcr=*/false};
  }
  return {pid, StreamKind::kUnreferenced, "unreferenced", {}, /*hasPcr=*/false};
}

}  // namespace

std::vector<InputStream> serviceStreams(int pmtPid, const PMT& pmt) {
  std::vector<InputStream> streams;
  std::set<int> seen = {kNullPid};
  const auto add = [&](int pid, const StreamTraits& traits) {
    if (seen.insert(pid).second) {
      streams.push_back({pid, traits.kind, traits.description, traits.languages,
                         /*hasPcr=*/pid == pmt.pcrPid});
    }
  };
  const auto addEcms = [&](const std::vector<Descriptor>& descriptors) {
    for (const CaReference& reference : caReferences(descriptors)) {
      add(reference.pid, {StreamKind::kConditionalAccess, caText("ECM", reference.systemId), {}});
    }
  };
  add(pmtPid, {StreamKind::kTables, "PMT", {}});
  for (const PMTES& stream : pmt.esList) {
    add(stream.pid, traitsOf(stream));
  }
  add(pmt.pcrPid, {StreamKind::kData, "PCR alone", {}});
  addEcms(pmt.descriptors);
  for (const PMTES& stream : pmt.esList) {
    addEcms(stream.descriptors);
  }
  return streams;
}

std::vector<InputStream> otherStreams(const std::map<int, PidCount>& pids,
                                      const std::vector<Service>& services,
                                      const TableJournal& journal) {
  const NamedPids named = namedPids(journal);
  std::set<int> rest;
  for (const auto& entry : pids) {
    rest.insert(entry.first);
  }
  for (const auto& entry : named.emms) {
    rest.insert(entry.first);
  }
  for (const Service& service : services) {
    for (const InputStream& stream : service.streams) {
      rest.erase(stream.pid);
    }
  }
  std::vector<InputStream> streams;
  streams.reserve(rest.size());
  for (const int pid : rest) {
    streams.push_back(otherStream(pid, named));
  }
  std::stable_sort(streams.begin(), streams.end(), [](const auto& a, const auto& b) {
    return std::tie(a.kind, a.pid) < std::tie(b.kind, b.pid);
  });
  return streams;
}

}  // namespace tevra::tools::report
