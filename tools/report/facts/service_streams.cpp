#include "tools/report/facts/service_streams.h"

#include <algorithm>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "tools/descriptors/descriptor_values.h"
#include "tools/report/facts/stream_traits.h"
#include "tools/stream/ts_packet.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

std::string caText(const char* what, int systemId) {
  return std::string(what) + " of " + hex(systemId, 4);
}

/** Keeps the first of each PID. */
class StreamList {
 public:
  void add(int pid, StreamKind kind, std::string description,
           std::vector<std::string> languages = {}) {
    if (pid == kNullPid || !seen_.insert(pid).second) {
      return;
    }
    InputStream& stream = streams_.emplace_back();
    stream.pid = pid;
    stream.kind = kind;
    stream.description = std::move(description);
    stream.languages = std::move(languages);
  }

  void addEcms(const std::vector<Descriptor>& descriptors) {
    for (const CaReference& reference : caReferences(descriptors)) {
      add(reference.pid, StreamKind::kConditionalAccess, caText("ECM", reference.systemId));
    }
  }

  std::vector<InputStream> take() { return std::move(streams_); }

 private:
  std::set<int> seen_;
  std::vector<InputStream> streams_;
};

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
  InputStream stream;
  stream.pid = pid;
  stream.description = "unreferenced";
  if (const auto entry = named.emms.find(pid); entry != named.emms.end()) {
    stream.kind = StreamKind::kConditionalAccess;
    stream.description = entry->second;
  } else if (pid == kNullPid) {
    stream.kind = StreamKind::kStuffing;
    stream.description = "null packets";
  } else if (const std::string name = reservedPidName(pid); !name.empty()) {
    stream.kind = StreamKind::kTables;
    stream.description = name;
  } else if (named.nits.count(pid) != 0) {
    stream.kind = StreamKind::kTables;
    stream.description = "NIT";
  }
  return stream;
}

}  // namespace

std::vector<InputStream> serviceStreams(int pmtPid, const PMT& pmt) {
  StreamList list;
  list.add(pmtPid, StreamKind::kTables, "PMT");
  for (const PMTES& stream : pmt.esList) {
    StreamTraits traits = traitsOf(stream);
    list.add(stream.pid, traits.kind, std::move(traits.description), std::move(traits.languages));
  }
  list.add(pmt.pcrPid, StreamKind::kData, "PCR alone");
  list.addEcms(pmt.descriptors);
  for (const PMTES& stream : pmt.esList) {
    list.addEcms(stream.descriptors);
  }
  std::vector<InputStream> streams = list.take();
  for (InputStream& stream : streams) {
    stream.hasPcr = stream.pid == pmt.pcrPid;
  }
  return streams;
}

std::vector<InputStream> otherStreams(const std::map<int, PidCount>& pids,
                                      const std::vector<Service>& services,
                                      const TableJournal& journal) {
  std::set<int> shown;
  for (const Service& service : services) {
    for (const InputStream& stream : service.streams) {
      shown.insert(stream.pid);
    }
  }
  const NamedPids named = namedPids(journal);
  std::set<int> rest;
  for (const auto& entry : pids) {
    rest.insert(entry.first);
  }
  for (const auto& entry : named.emms) {
    rest.insert(entry.first);
  }
  std::vector<InputStream> streams;
  for (const int pid : rest) {
    if (shown.count(pid) == 0) {
      streams.push_back(otherStream(pid, named));
    }
  }
  std::stable_sort(streams.begin(), streams.end(), [](const auto& a, const auto& b) {
    return std::tie(a.kind, a.pid) < std::tie(b.kind, b.pid);
  });
  return streams;
}

}  // namespace tevra::tools::report
