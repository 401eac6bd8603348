#include "tests/system/soak_pids.h"

#include <set>

namespace tevra::test {

using thrift::dvb_tables::CAT;
using thrift::dvb_tables::Descriptor;
using thrift::dvb_tables::PAT;
using thrift::dvb_tables::PATProgram;
using thrift::dvb_tables::PMT;
using thrift::dvb_tables::PMTES;

void SoakPids::follow(int32_t transportStreamId) {
  if (mapping_.transportStreamId == transportStreamId) {
    return;
  }
  mapping_ = Mapping();
  mapping_.transportStreamId = transportStreamId;
  ++resets_;
}

int32_t SoakPids::outputOf(int32_t inputPid) {
  const auto [entry, isNew] = mapping_.outputs.emplace(inputPid, mapping_.next);
  if (isNew) {
    mapping_.inputs[mapping_.next] = inputPid;
    ++mapping_.next;
    unsaved_ = true;
  }
  return entry->second;
}

int32_t SoakPids::inputOf(int32_t outputPid) const {
  constexpr int32_t kUnknown = 65535;
  const auto known = mapping_.inputs.find(outputPid);
  return known == mapping_.inputs.end() ? kUnknown : known->second;
}

std::vector<Descriptor> SoakPids::rewritten(const std::vector<Descriptor>& descriptors) {
  std::vector<Descriptor> all = descriptors;
  for (Descriptor& descriptor : all) {
    if (descriptor.tag != kCaTag) {
      continue;
    }
    if (const auto pid = caPidOf(descriptor)) {
      const int32_t output = outputOf(*pid);
      descriptor.data[2] = static_cast<char>(0xE0 | output >> 8);
      descriptor.data[3] = static_cast<char>(output & 0xFF);
    } else {
      descriptor.data.clear();
    }
  }
  return all;
}

PAT SoakPids::rewritten(const PAT& pat) {
  PAT made = pat;
  for (PATProgram& program : made.programs) {
    program.pid = outputOf(program.pid);
  }
  return made;
}

PMT SoakPids::rewritten(const PMT& pmt) {
  static const std::set<int32_t> kCarried = {1, 2, 3, 4, 6, 15, 16, 17, 27, 36};
  PMT made = pmt;
  made.pcrPid = outputOf(pmt.pcrPid);
  made.descriptors = rewritten(pmt.descriptors);
  made.esList.clear();
  for (const PMTES& stream : pmt.esList) {
    if (kCarried.count(stream.streamType) == 1) {
      PMTES& carried = made.esList.emplace_back(stream);
      carried.pid = outputOf(stream.pid);
      carried.descriptors = rewritten(stream.descriptors);
    }
  }
  return made;
}

CAT SoakPids::rewritten(const CAT& cat) {
  CAT made = cat;
  made.descriptors = rewritten(cat.descriptors);
  return made;
}

void SoakPids::save() {
  if (unsaved_) {
    file_ = mapping_;
    unsaved_ = false;
  }
}

void SoakPids::restart() {
  mapping_ = file_;
  unsaved_ = false;
}

std::optional<int32_t> caPidOf(const Descriptor& descriptor) {
  if (descriptor.data.size() < 4) {
    return std::nullopt;
  }
  return (static_cast<uint8_t>(descriptor.data[2]) & 0x1F) << 8 |
         static_cast<uint8_t>(descriptor.data[3]);
}

}  // namespace tevra::test
