#include "synth/pid_items.h"

#include <algorithm>

#include "cfdb/ca_descriptors.h"
#include "platform/module_utils.h"
#include "records/dvbpsi_converters.h"

namespace tevra {

bool addPidItem(PidList& pidList, int32_t pid, PidAttribute attribute) {
  const auto bit = static_cast<int32_t>(attribute);
  const auto found = std::find_if(pidList.begin(), pidList.end(),
                                  [&](const PIDItem& item) { return item.inputPid == pid; });
  if (found != pidList.end()) {
    found->attributes |= bit;
    log_function(kLogDebug, nullptr,
                 "Encuentro uno previamente insertado!!! PID [0x%04x] ATTR [0x%04x]",
                 static_cast<unsigned>(pid), static_cast<unsigned>(found->attributes));
    return true;
  }
  PIDItem& item = pidList.emplace_back();
  item.inputPid = pid;
  item.outputPid = pid;
  item.attributes = bit;
  return true;
}

bool collectEmmPids(PidList& pidList, const CAT& cat) {
  const CatPtr table = thrift::dvb_tables::t2dCAT(cat);
  for (auto* node = table->p_first_descriptor; node != nullptr; node = node->p_next) {
    if (node->i_tag != kCaDescriptorTag) {
      continue;
    }
    const dvbpsi_ca_dr_t* ca = dvbpsi_DecodeCADr(node);
    if (ca == nullptr) {
      continue;
    }
    log_function(kLogDebug, nullptr, "EMM PID found [0x%04x].", ca->i_ca_pid);
    addPidItem(pidList, ca->i_ca_pid, PidAttribute::Emm);
  }
  return true;
}

}  // namespace tevra
