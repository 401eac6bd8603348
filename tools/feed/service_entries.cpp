#include "tools/feed/service_entries.h"

#include <algorithm>
#include <array>

#include "im_SIControlSrv.h"
#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_values.h"
#include "tools/si/section.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int kServiceTag = 0x48;
constexpr int kRunning = 4;
constexpr int kVersions = 32;

/** A stream type and the service type that goes with it. */
struct TypePair {
  int streamType;
  int serviceType;
};
/** The newest video first. */
constexpr std::array<TypePair, 8> kServiceTypes = {{
    {0x33, 0x21},  // VVC
    {0x24, 0x1F},  // HEVC
    {0x1B, 0x19},  // AVC
    {0x10, 0x01},  // MPEG-4, which has no type of its own
    {0x02, 0x01},  // MPEG-2
    {0x01, 0x01},  // MPEG-1
    {0x04, 0x02},  // radio
    {0x03, 0x02},
}};
constexpr int kAdvancedCodecRadio = 0x0A;
constexpr int kDataBroadcast = 0x0C;

Descriptor serviceDescriptor(int type, const std::string& name) {
  Descriptor descriptor;
  descriptor.tag = kServiceTag;
  descriptor.data = static_cast<char>(type);
  descriptor.data += '\0';  // no provider
  descriptor.data += static_cast<char>(name.size());
  descriptor.data += name;
  return descriptor;
}

/** The stream's SDT to add to, or a new one. */
SDT sdtToEnterInto(const StreamInventory& inventory) {
  SDT sdt = inventory.sdt().value_or(SDT());
  sdt.version = inventory.sdt() ? (sdt.version + 1) % kVersions : 0;
  if (!inventory.sdt()) {
    sdt.tableId = kTableSdtActual;
    sdt.transportStreamId = inventory.transportStreamId().value_or(0);
    sdt.currentNext = true;
  }
  return sdt;
}

bool isDescribed(const SDTService& service) {
  return firstWithTag(service.descriptors, kServiceTag) != nullptr;
}

/** The service's entry, which may be new. */
SDTService& entryOf(SDT& sdt, int serviceId) {
  const auto found =
      std::find_if(sdt.services.begin(), sdt.services.end(),
                   [&](const SDTService& service) { return service.serviceId == serviceId; });
  if (found != sdt.services.end()) {
    return *found;
  }
  SDTService& entry = sdt.services.emplace_back();
  entry.serviceId = serviceId;
  entry.runningStatus = kRunning;
  return entry;
}

}  // namespace

int serviceTypeOf(const PMT& pmt) {
  for (const TypePair& pair : kServiceTypes) {
    for (const PMTES& stream : pmt.esList) {
      if (stream.streamType == pair.streamType) {
        return pair.serviceType;
      }
    }
  }
  return std::any_of(pmt.esList.begin(), pmt.esList.end(), isAudio) ? kAdvancedCodecRadio
                                                                    : kDataBroadcast;
}

std::vector<std::string> enterServices(thrift::in_module::im_SIControlSrvIf& daemon,
                                       const StreamInventory& inventory,
                                       const std::set<int>& services) {
  SDT sdt = sdtToEnterInto(inventory);
  std::vector<std::string> lines;
  for (const int serviceId : services) {
    SDTService& entry = entryOf(sdt, serviceId);
    if (isDescribed(entry)) {
      continue;
    }
    const int type = serviceTypeOf(*inventory.pmt(serviceId));
    const std::string id = std::to_string(serviceId);
    entry.descriptors.push_back(serviceDescriptor(type, "Service " + id));
    lines.push_back((inventory.sdt() ? "the SDT does not describe service " + id
                                     : "there is no SDT to describe service " + id) +
                    ": it goes out as " + serviceTypeName(type) + " (type " + hex(type, 2) +
                    "), by its streams");
  }
  if (!lines.empty()) {
    daemon.setSDT(sdt);
  }
  return lines;
}

}  // namespace tevra::tools
