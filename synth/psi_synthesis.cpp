#include "synth/psi_synthesis.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
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

/** Replaces what is stored, as a whole or, short of memory, not at all. Only when the packets
 * exist. */
template <class Table>
void store(Table& stored, Table table) {
  static_assert(std::is_nothrow_move_assignable_v<Table>);
  stored = std::move(table);
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
      DecodableDescriptor source(*descriptor);
      if (const dvbpsi_service_dr_t* decoded =
              decodedIf(descriptor->data.size() >= kShortestServiceDescriptor,
                        dvbpsi_DecodeServiceDr(source.get()))) {
        return decoded->i_service_type;
      }
    }
  }
  log_function(kLogWarning, kNoTag, "Service not found in STD!!");
  return 0;
}

int synthPAT(ServiceWorkRecord& workingStore, PAT& storedPat) {
  const DvbpsiHandle handle = newHandle();
  if (handle == nullptr) {
    return -1;
  }
  PAT pat = candidatePat(workingStore, storedPat.version);
  const bool changed = patChanged(pat, storedPat);
  if (changed) {
    log_function(kLogDebug, kNoTag, "Saves a new PAT in myTableStores struct");
    pat.version = nextVersion(storedPat.version);
  }
  const PatPtr table = t2dPAT(pat);
  const SectionsPtr sections = allocated(
      SectionsPtr(dvbpsi_pat_sections_generate(handle.get(), table.get(), kProgramsPerPatSection)));
  packetizeSections(workingStore.outputTables.patPackets, makePacketTemplate(kPatPid),
                    sections.get());
  if (changed) {
    store(storedPat, pat);
  }
  workingStore.outputTables.dvbTables.pat = std::move(pat);
  return 0;
}

int synthSDT(ServiceWorkRecord& workingStore, SDT& storedSdt) {
  const DvbpsiHandle handle = newHandle();
  if (handle == nullptr) {
    return 1;
  }
  SDT sdt = candidateSdt(workingStore, storedSdt.version);
  const bool changed = sdtChanged(sdt, storedSdt);
  if (changed) {
    log_function(kLogDebug, kNoTag, "Saves a new SDT in myTableStores struct");
    sdt.version = nextVersion(storedSdt.version);
  }
  const SdtPtr table = t2dSDT(sdt);
  assureSection();
  const SectionsPtr sections =
      allocated(SectionsPtr(dvbpsi_sdt_sections_generate(handle.get(), table.get())));
  packetizeSections(workingStore.outputTables.sdtPackets, makePacketTemplate(kSdtPid),
                    sections.get());
  if (changed) {
    store(storedSdt, sdt);
  }
  workingStore.outputTables.dvbTables.sdt = std::move(sdt);
  return 0;
}

int synthPMT(ServiceWorkRecord& workingStore, PMT& storedPmt) {
  const DvbpsiHandle handle = newHandle();
  if (handle == nullptr) {
    return 1;
  }
  PMT& pmt = workingStore.pmt;
  const int16_t pmtPid = findProgramPid(pmt.programNumber, workingStore.service.pat);
  pmt.programNumber = workingStore.identity.outputSID;
  pmt.version = storedPmt.version;
  const bool changed = pmtChanged(pmt, storedPmt);
  PMT output = changed ? pmt : storedPmt;
  if (changed) {
    log_function(kLogDebug, kNoTag, "Saves a new PMT in myTableStores struct");
    output.version = nextVersion(storedPmt.version);
  }
  const SectionsPtr sections = generatePmtSections(*handle, changed ? output : pmt);
  packetizeSections(workingStore.outputTables.pmtPackets, makePacketTemplate(pmtPid),
                    sections.get());
  if (changed) {
    store(storedPmt, output);
  }
  workingStore.outputTables.dvbTables.pmt = std::move(output);
  return 0;
}

void saveSynthesisedTables(TableStores& stores, ServiceWorkRecord& workingStore) {
  TableStore& stored = stores.tableStore(workingStore.pmt.programNumber);
  // Without a handle a table keeps its last version and the output goes without it.
  (void)synthPAT(workingStore, stored.pat);
  (void)synthSDT(workingStore, stored.sdt);
  (void)synthPMT(workingStore, stored.pmt);
  stores.saveTableStores();
}

}  // namespace tevra
