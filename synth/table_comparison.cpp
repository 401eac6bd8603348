#include "synth/table_comparison.h"

#include <cstdint>

namespace tevra {

bool patChanged(const PAT& a, const PAT& b) {
  return a.transportStreamId != b.transportStreamId || a.programs != b.programs;
}

bool sdtChanged(const SDT& a, const SDT& b) {
  return a.tableId != b.tableId || a.transportStreamId != b.transportStreamId ||
         a.originalNetworkId != b.originalNetworkId || a.services != b.services;
}

bool pmtChanged(const PMT& a, const PMT& b) {
  return a.programNumber != b.programNumber || a.pcrPid != b.pcrPid ||
         a.descriptors != b.descriptors || a.esList != b.esList;
}

int32_t nextVersion(int32_t version) {
  constexpr uint32_t kVersions = 32;
  return static_cast<int32_t>((static_cast<uint32_t>(version) + 1U) % kVersions);
}

}  // namespace tevra
