#include "synth/psi_synthesis.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/dvb_utils.h"
#include "platform/module_utils.h"
#include "records/dvbpsi_converters.h"
#include "records/dvbpsi_lists.h"
#include "synth/dvb_name.h"
#include "synth/packetizer.h"
#include "synth/pmt_sections.h"
#include "synth/table_comparison.h"

namespace tevra {
namespace {

using thrift::dvb_tables::t2dPAT;
using thrift::dvb_tables::t2dSDT;

constexpr int32_t kPatPid = 0x0000;
constexpr int32_t kSdtPid = 0x0011;
constexpr uint8_t kSdtActualTableId = 0x42;
constexpr uint8_t kServiceDescriptorTag = 0x48;
constexpr size_t kShortestServiceDescriptor = 3;  // type and two lengths: EN 300 468, 6.2.33
constexpr int kProgramsPerPatSection = 100;
constexpr uint8_t kRunning = 4;
constexpr std::string_view kProviderName = "TEVRA SA";  // docs/contract.md, "Provider name"

/** Service type, the two lengths and the provider leave this much of a descriptor; libdvbpsi does
 * not check. */
constexpr size_t kMaxServiceName = kMaxDescriptorPayload - 3 - kProviderName.size();

DvbpsiHandle newHandle() {
  return DvbpsiHandle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE));
}

/** The output service's PAT, as a record: a PMT PID of 0 has its place here, though not in a
 * section. */
PAT candidatePat(const ServiceWorkRecord& work, int32_t version) {
  PAT pat;
  pat.transportStreamId = static_cast<uint16_t>(work.identity.transportStreamId);
  pat.version = static_cast<uint8_t>(version);
  pat.currentNext = work.service.pat.currentNext;
  PATProgram& program = pat.programs.emplace_back();
  program.programNumber = static_cast<uint16_t>(work.identity.outputSID);
  program.pid = static_cast<uint16_t>(findProgramPid(work.pmt.programNumber, work.service.pat));
  return pat;
}

/** The name as the service descriptor carries it: DVB text up to its first zero byte, cut to what
 * fits. */
std::string encodedServiceName(const OutputServiceDescription& identity) {
  std::string name;
  if (!dvbTextFromUTF8(identity.serviceName, name)) {
    log_function(kLogWarning, kNoTag, "[synthSDT] Service name cannot be encoded.");
    name = "Noname" + std::to_string(identity.outputSID);
  }
  name.resize(std::min(name.find('\0'), name.size()));
  return cutDvbText(name, kMaxServiceName);
}

/** The descriptor loop of the output service. */
std::vector<Descriptor> serviceDescriptors(const ServiceWorkRecord& work) {
  const uint8_t type = findServiceType(work.pmt.programNumber, work.service.sdt);
  const std::string name = encodedServiceName(work.identity);
  assert(name.size() <= kMaxServiceName);
  dvbpsi_service_dr_t decoded{};
  decoded.i_service_type = type;
  decoded.i_service_provider_name_length = static_cast<uint8_t>(kProviderName.size());
  std::memcpy(decoded.i_service_provider_name, kProviderName.data(), kProviderName.size());
  decoded.i_service_name_length = static_cast<uint8_t>(name.size());
  std::memcpy(decoded.i_service_name, name.data(), name.size());
  const DescriptorPtr generated = allocated(DescriptorPtr(dvbpsi_GenServiceDr(&decoded, false)));
  return descriptorsFromDvbpsi(generated.get());
}

/** The output service's SDT, its values as wide as in a section. */
SDT candidateSdt(const ServiceWorkRecord& work, int32_t version) {
  SDT sdt;
  sdt.tableId = kSdtActualTableId;
  sdt.transportStreamId = static_cast<uint16_t>(work.identity.transportStreamId);
  sdt.version = static_cast<uint8_t>(version);
  sdt.currentNext = work.service.sdt.currentNext;
  sdt.originalNetworkId = static_cast<uint16_t>(work.identity.originalNetworkId);
  SDTService& service = sdt.services.emplace_back();
  service.serviceId = static_cast<uint16_t>(work.identity.outputSID);
  service.runningStatus = kRunning;
  service.descriptors = serviceDescriptors(work);
  return sdt;
}

/** The first service descriptor that a section can hold; null when there is none. */
const Descriptor* firstServiceDescriptor(const SDTService& service) {
  for (const Descriptor& descriptor : service.descriptors) {
    if (static_cast<uint8_t>(descriptor.tag) != kServiceDescriptorTag) {
      continue;
    }
    if (fitsSection(descriptor)) {
      return &descriptor;
    }
    logLeftOut(descriptor);
  }
  return nullptr;
}

/** Where a table lies in what is stored and in what is handed out. */
template <class Table>
struct Place {
  Table TableStore::*stored;
  KeptPackets StoredTables::*kept;
  std::vector<std::string> OutputTables::*packets;
  Table DVBOutputTables::*output;
  const char* savesNew;  ///< the line of one that changed
};

constexpr Place<PAT> kPat = {&TableStore::pat, &StoredTables::patPackets, &OutputTables::patPackets,
                             &DVBOutputTables::pat, "Saves a new PAT in myTableStores struct"};
constexpr Place<SDT> kSdt = {&TableStore::sdt, &StoredTables::sdtPackets, &OutputTables::sdtPackets,
                             &DVBOutputTables::sdt, "Saves a new SDT in myTableStores struct"};
constexpr Place<PMT> kPmt = {&TableStore::pmt, &StoredTables::pmtPackets, &OutputTables::pmtPackets,
                             &DVBOutputTables::pmt, "Saves a new PMT in myTableStores struct"};

/** Makes the packets and a copy to keep; not of those that `generate` tells of, since its lines
 * belong to every output. */
template <class Table, class Generate>
KeptPackets makePackets(std::vector<std::string>& packets, const Table& table, int32_t pid,
                        Generate generate) {
  bool told = false;
  const SectionsPtr sections = generate(table, told);
  packetizeSections(packets, makePacketTemplate(pid), sections.get());
  return told ? KeptPackets() : KeptPackets(packets, table.version, table.currentNext, pid);
}

/**
 * Hands out `table`, whose version is the stored one: if its content is `changed` in the next, and
 * then it is stored. Last time's packets are handed out again where they are those of this table.
 * Nothing that is stored is replaced before all that replaces it exists.
 */
template <class Table, class Generate>
void handOut(const Place<Table>& place, ServiceWorkRecord& work, StoredTables& stored, Table table,
             bool changed, int32_t pid, Generate generate) {
  if (changed) {
    log_function(kLogDebug, kNoTag, "%s", place.savesNew);
    table.version = nextVersion(table.version);
  }
  KeptPackets& kept = stored.*place.kept;
  std::vector<std::string>& packets = work.outputTables.*place.packets;
  if (!changed && kept.areOf(table.version, table.currentNext, pid)) {
    packets = kept.packets();
    logPacketCount(packets);
  } else {
    KeptPackets made = makePackets(packets, table, pid, generate);
    if (changed) {
      stored.replace(place.stored, Table(table));
    }
    kept = std::move(made);
  }
  work.outputTables.dvbTables.*place.output = std::move(table);
}

}  // namespace

int16_t findProgramPid(int32_t programNumber, const PAT& pat) {
  const auto last = std::find_if(
      pat.programs.rbegin(), pat.programs.rend(),
      [&](const PATProgram& program) { return program.programNumber == programNumber; });
  if (last == pat.programs.rend()) {
    log_function(kLogError, kNoTag, "ProgramNumber not found.");
    return -1;
  }
  return static_cast<int16_t>(last->pid);
}

uint8_t findServiceType(int32_t serviceId, const SDT& sdt) {
  for (const SDTService& service : sdt.services) {
    if (static_cast<uint16_t>(service.serviceId) != serviceId) {
      continue;
    }
    if (const Descriptor* descriptor = firstServiceDescriptor(service)) {
      if (descriptor->data.size() >= kShortestServiceDescriptor) {
        DecodableDescriptor source(*descriptor);
        return allocated(dvbpsi_DecodeServiceDr(source.get()))->i_service_type;
      }
    }
  }
  log_function(kLogWarning, kNoTag, "Service not found in STD!!");
  return 0;
}

int synthPAT(ServiceWorkRecord& workingStore, StoredTables& stored) {
  const DvbpsiHandle handle = newHandle();
  if (handle == nullptr) {
    return -1;
  }
  PAT pat = candidatePat(workingStore, stored->pat.version);
  const bool changed = patChanged(pat, stored->pat);
  handOut(kPat, workingStore, stored, std::move(pat), changed, kPatPid,
          [&](const PAT& table, bool& /*told*/) {
            return allocated(SectionsPtr(dvbpsi_pat_sections_generate(
                handle.get(), t2dPAT(table).get(), kProgramsPerPatSection)));
          });
  return 0;
}

int synthSDT(ServiceWorkRecord& workingStore, StoredTables& stored) {
  const DvbpsiHandle handle = newHandle();
  if (handle == nullptr) {
    return 1;
  }
  SDT sdt = candidateSdt(workingStore, stored->sdt.version);
  const bool changed = sdtChanged(sdt, stored->sdt);
  handOut(
      kSdt, workingStore, stored, std::move(sdt), changed, kSdtPid,
      [&](const SDT& table, bool& /*told*/) {
        const SdtPtr decoded = t2dSDT(table);
        assureSection();
        return allocated(SectionsPtr(dvbpsi_sdt_sections_generate(handle.get(), decoded.get())));
      });
  return 0;
}

int synthPMT(ServiceWorkRecord& workingStore, StoredTables& stored) {
  const DvbpsiHandle handle = newHandle();
  if (handle == nullptr) {
    return 1;
  }
  PMT& pmt = workingStore.pmt;
  const int16_t pmtPid = findProgramPid(pmt.programNumber, workingStore.service.pat);
  pmt.programNumber = workingStore.identity.outputSID;
  pmt.version = stored->pmt.version;
  const bool changed = pmtChanged(pmt, stored->pmt);
  handOut(kPmt, workingStore, stored, std::move(pmt), changed, pmtPid,
          [&](const PMT& table, bool& told) { return generatePmtSections(*handle, table, told); });
  // As it is stored, while the packets tell the flag of now.
  workingStore.outputTables.dvbTables.pmt.currentNext = stored->pmt.currentNext;
  return 0;
}

void saveSynthesisedTables(TableStores& stores, ServiceWorkRecord& workingStore) {
  StoredTables& stored = stores.tableStore(workingStore.pmt.programNumber);
  // Without a handle a table keeps its last version and the output goes without it.
  (void)synthPAT(workingStore, stored);
  (void)synthSDT(workingStore, stored);
  (void)synthPMT(workingStore, stored);
  stores.saveTableStores();
}

}  // namespace tevra
