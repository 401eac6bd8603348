#include "cfdb/ca_descriptors.h"

#include <algorithm>

#include "platform/module_utils.h"
#include "records/dvbpsi_lists.h"

namespace tevra {
namespace {

constexpr uint8_t kShortestCaDescriptor = 4;  // ISO/IEC 13818-1, 2.6.16

/** `payload` cut to its 8-bit length, as a libdvbpsi CA descriptor. */
DescriptorPtr toCaDescriptor(const std::string& payload) {
  return allocated(DescriptorPtr(dvbpsi_NewDescriptor(
      kCaDescriptorTag, static_cast<uint8_t>(payload.size()), bytesOf(payload))));
}

/** The payload of `descriptor` with its CA_PID replaced; empty, with a log line, when it is
 * corrupt. */
std::string remappedPayload(const Descriptor& descriptor, PidAllocator& pids) {
  const DescriptorPtr source = toCaDescriptor(descriptor.data);
  dvbpsi_ca_dr_t* ca = decodedCa(*source);
  if (ca == nullptr) {
    log_function(kLogError, kNoTag, "[cfDescriptors] corrupted ca descriptor.");
    return {};
  }
  const uint16_t inputPid = ca->i_ca_pid;
  const uint16_t outputPid = pids.getConflictFreePID(inputPid);
  log_function(kLogDebug, kNoTag, "iDesc PID [%05d/%04x] oDesc PID [%05d/%04x]", inputPid, inputPid,
               outputPid, outputPid);
  ca->i_ca_pid = outputPid;
  const DescriptorPtr remapped = allocated(DescriptorPtr(dvbpsi_GenCADr(ca, false)));
  return {reinterpret_cast<const char*>(remapped->p_data), remapped->i_length};
}

}  // namespace

dvbpsi_ca_dr_t* decodedCa(dvbpsi_descriptor_t& descriptor) {
  return descriptor.i_tag == kCaDescriptorTag && descriptor.i_length >= kShortestCaDescriptor
             ? allocated(dvbpsi_DecodeCADr(&descriptor))
             : nullptr;
}

std::vector<Descriptor> cfDescriptors(const std::vector<Descriptor>& descriptors,
                                      PidAllocator& pids) {
  std::vector<Descriptor> result = descriptors;
  for (Descriptor& descriptor : result) {
    if (descriptor.tag == kCaDescriptorTag) {
      descriptor.data = remappedPayload(descriptor, pids);
    }
  }
  return result;
}

std::vector<Descriptor> withoutCaDescriptors(std::vector<Descriptor> descriptors) {
  const auto isCa = [](const Descriptor& descriptor) { return descriptor.tag == kCaDescriptorTag; };
  descriptors.erase(std::remove_if(descriptors.begin(), descriptors.end(), isCa),
                    descriptors.end());
  return descriptors;
}

}  // namespace tevra
