// Descriptor loops of any content: made conflict-free, and analysed as the streams of a programme.

#include <algorithm>
#include <set>

#include "cfdb/ca_descriptors.h"
#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/isolation.h"
#include "fuzz/record_source.h"
#include "fuzz/target.h"
#include "synth/elementary_streams.h"

namespace tevra::fuzz {
namespace {

constexpr size_t kCaHeader = 4;  // CA_system_ID and CA_PID
constexpr size_t kMaxDescriptors = 60;

int caPid(const std::string& payload) {
  return (static_cast<uint8_t>(payload[2]) & 0x1F) << 8 | static_cast<uint8_t>(payload[3]);
}

/** All but the CA_PID is as it was. */
void checkCaDescriptor(const std::string& in, const std::string& out, PidAllocator& pids) {
  const size_t size = in.size() & 0xFF;  // of descriptor_length
  if (size < kCaHeader) {
    TORNEL_FUZZ_CHECK(out.empty());
    return;
  }
  TORNEL_FUZZ_CHECK(out.size() == size);
  TORNEL_FUZZ_CHECK(out.compare(0, 2, in, 0, 2) == 0);
  TORNEL_FUZZ_CHECK(out.compare(kCaHeader, size, in, kCaHeader, size - kCaHeader) == 0);
  TORNEL_FUZZ_CHECK(caPid(out) == (pids.getConflictFreePID(caPid(in)) & 0x1FFF));
}

void checkKept(const std::vector<Descriptor>& in, const std::vector<Descriptor>& out,
               PidAllocator& pids) {
  TORNEL_FUZZ_CHECK(out.size() == in.size());
  for (size_t index = 0; index < in.size(); ++index) {
    TORNEL_FUZZ_CHECK(out[index].tag == in[index].tag);
    if (in[index].tag == kCaDescriptorTag) {
      checkCaDescriptor(in[index].data, out[index].data, pids);
    } else {
      TORNEL_FUZZ_CHECK(out[index].data == in[index].data);
    }
  }
}

void checkDropped(std::vector<Descriptor> in, const std::vector<Descriptor>& out) {
  in.erase(std::remove_if(in.begin(), in.end(),
                          [](const Descriptor& each) { return each.tag == kCaDescriptorTag; }),
           in.end());
  TORNEL_FUZZ_CHECK(out == in);
}

void makeConflictFree(const std::vector<Descriptor>& descriptors) {
  PidAllocator pids(0);
  checkKept(descriptors, cfDescriptors(descriptors, pids), pids);
  checkDropped(descriptors, withoutCaDescriptors(descriptors));
}

void checkPids(const PidList& pids) {
  std::set<int32_t> seen;
  for (const PIDItem& item : pids.items()) {
    TORNEL_FUZZ_CHECK(seen.insert(item.inputPid).second);
    TORNEL_FUZZ_CHECK(item.inputPid == item.outputPid && item.attributes != 0);
  }
}

void analyse(const PAT& pat, const PMT& pmt, const LastNodeSettings& settings) {
  PMT all;
  PidList allPids;
  filterPmt(all, allPids, pat, pmt, false, settings.audioLanguages);
  TORNEL_FUZZ_CHECK(all.esList.size() == pmt.esList.size());
  checkPids(allPids);

  PMT filtered;
  PidList pids;
  filterPmt(filtered, pids, pat, pmt, true, settings.audioLanguages);
  TORNEL_FUZZ_CHECK(filtered.esList.size() <= all.esList.size());
  TORNEL_FUZZ_CHECK(pids.items().size() <= allPids.items().size());
  checkPids(pids);
}

}  // namespace
}  // namespace tevra::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace tevra::fuzz;  // NOLINT(google-build-using-namespace): the target itself
  emptyConfigurationRoot();
  ByteSource source(bytes, size);
  tevra::CAT cat;
  cat.descriptors = makeDescriptors(source, kMaxDescriptors);
  makeConflictFree(cat.descriptors);
  tevra::PidList emmPids;
  collectEmmPids(emmPids, cat);
  checkPids(emmPids);
  const tevra::LastNodeSettings settings = makeLastNode(source);
  const tevra::PAT pat = makePat(source);
  analyse(pat, makePmt(source), settings);
  return 0;
}
