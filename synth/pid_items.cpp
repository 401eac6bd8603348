#include "synth/pid_items.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "cfdb/ca_descriptors.h"
#include "platform/module_utils.h"
#include "records/dvbpsi_converters.h"

namespace tevra {
namespace {

/** Up to here looking at each is faster than an index; the outputs of real services stay below. */
constexpr size_t kFewItems = 64;

/** Room for a usual service from the start. */
constexpr size_t kUsualItems = 16;

}  // namespace

PIDItem* PidList::find(int32_t inputPid) {
  if (items_.size() <= kFewItems) {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [&](const PIDItem& item) { return item.inputPid == inputPid; });
    return found == items_.end() ? nullptr : &*found;
  }
  const auto found = positions_.find(inputPid);
  return found == positions_.end() ? nullptr : &items_[found->second];
}

PIDItem& PidList::append(int32_t pid) {
  assert(find(pid) == nullptr);
  if (items_.empty()) {
    items_.reserve(kUsualItems);
  }
  PIDItem& item = items_.emplace_back();
  item.inputPid = pid;
  item.outputPid = pid;
  // The first item too many brings all before it into the index.
  if (items_.size() > kFewItems) {
    for (size_t position = positions_.size(); position < items_.size(); ++position) {
      positions_.emplace(items_[position].inputPid, position);
    }
  }
  return item;
}

std::vector<PIDItem> PidList::take() {
  positions_.clear();
  return std::exchange(items_, {});
}

bool addPidItem(PidList& pidList, int32_t pid, PidAttribute attribute) {
  const auto bit = static_cast<int32_t>(attribute);
  if (PIDItem* found = pidList.find(pid)) {
    found->attributes |= bit;
    log_function(kLogDebug, kNoTag,
                 "Encuentro uno previamente insertado!!! PID [0x%04x] ATTR [0x%04x]",
                 static_cast<unsigned>(pid), static_cast<unsigned>(found->attributes));
    return true;
  }
  pidList.append(pid).attributes = bit;
  return true;
}

bool collectEmmPids(PidList& pidList, const CAT& cat) {
  const CatPtr table = thrift::dvb_tables::t2dCAT(cat);
  for (auto* node = table->p_first_descriptor; node != nullptr; node = node->p_next) {
    if (const dvbpsi_ca_dr_t* ca = decodedCa(*node)) {
      log_function(kLogDebug, kNoTag, "EMM PID found [0x%04x].", ca->i_ca_pid);
      addPidItem(pidList, ca->i_ca_pid, PidAttribute::Emm);
    }
  }
  return true;
}

}  // namespace tevra
