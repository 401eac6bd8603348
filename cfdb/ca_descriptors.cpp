#include "cfdb/ca_descriptors.h"

#include "platform/module_utils.h"
#include "records/dvbpsi_lists.h"

namespace tevra {
namespace {

/** `payload` cut to its 8-bit length, as a libdvbpsi CA descriptor. */
DescriptorPtr toCaDescriptor(const std::string& payload) {
  auto* bytes = const_cast<uint8_t*>(bytesOf(payload));  // copied, not changed
  return DescriptorPtr(
      dvbpsi_NewDescriptor(kCaDescriptorTag, static_cast<uint8_t>(payload.size()), bytes));
}

/** The payload of `descriptor` with its CA_PID replaced; empty, with a log line, when it is
 * corrupt. */
std::string remappedPayload(const Descriptor& descriptor, PidAllocator& pids) {
  const DescriptorPtr source = toCaDescriptor(descriptor.data);
  dvbpsi_ca_dr_t* ca = source ? dvbpsi_DecodeCADr(source.get()) : nullptr;
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

std::vector<Descriptor> cfDescriptors(const std::vector<Descriptor>& descriptors, bool dropCA,
                                      PidAllocator& pids) {
  std::vector<Descriptor> result;
  result.reserve(descriptors.size());
  for (const Descriptor& descriptor : descriptors) {
    if (descriptor.tag != kCaDescriptorTag) {
      result.push_back(descriptor);
    } else if (!dropCA) {
      Descriptor& remapped = result.emplace_back();
      remapped.tag = kCaDescriptorTag;
      remapped.data = remappedPayload(descriptor, pids);
    }
  }
  return result;
}

}  // namespace tevra
