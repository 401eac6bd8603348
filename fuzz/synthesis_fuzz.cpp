// Tables of any content synthesised, cut into packets and received again: what a receiver finds is
// what the answer's records say, as far as a section can carry it, and others take it too.

#include <utility>

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/packet_decoder.h"
#include "fuzz/record_source.h"
#include "fuzz/target.h"
#include "synth/psi_synthesis.h"
#include "tests/synth/bitstream_judge.h"

namespace tevra::fuzz {
namespace {

constexpr int kVersions = 32;
constexpr size_t kMaxDescriptor = 255;
constexpr size_t kMaxSectionBody = 1008;  // of a PMT section, without header, PCR, length and CRC
constexpr size_t kMaxSections = 256;

// Records as sections hold them: fields as wide as the standard's, and nothing that does not fit.

std::vector<Descriptor> carried(const std::vector<Descriptor>& descriptors, size_t& room) {
  std::vector<Descriptor> result;
  for (const Descriptor& descriptor : descriptors) {
    const size_t size = descriptor.data.size() + 2;
    if (descriptor.data.size() > kMaxDescriptor) {
      continue;  // its length has 8 bits
    }
    if (size > room) {
      break;
    }
    room -= size;
    result.push_back(descriptor);
    result.back().tag &= 0xFF;
  }
  return result;
}

PAT carried(PAT pat) {
  pat.transportStreamId &= 0xFFFF;
  pat.version &= kVersions - 1;
  const PATProgram program = pat.programs.at(0);
  pat.programs.clear();
  if ((program.pid & 0xFFFF) != 0) {
    PATProgram& listed = pat.programs.emplace_back();
    listed.programNumber = program.programNumber & 0xFFFF;
    listed.pid = program.pid & 0x1FFF;
  }
  return pat;
}

SDT carried(SDT sdt) {
  sdt.version &= kVersions - 1;
  return sdt;  // its other fields have been narrowed by libdvbpsi
}

PMT carried(PMT pmt) {
  pmt.programNumber &= 0xFFFF;
  pmt.version &= kVersions - 1;
  pmt.pcrPid &= 0x1FFF;
  size_t endless = SIZE_MAX;  // a loop may go on in further sections
  pmt.descriptors = carried(pmt.descriptors, endless);
  for (PMTES& stream : pmt.esList) {
    stream.streamType &= 0xFF;
    stream.pid &= 0x1FFF;
    size_t room = kMaxSectionBody - 5;  // a stream is never divided
    stream.descriptors = carried(stream.descriptors, room);
  }
  return pmt;
}

/** All of `sent`, or its beginning where 256 sections were not enough. */
void checkPmt(const Received<PMT>& received, PMT sent, bool currentNext) {
  sent.currentNext = currentNext;  // of an unchanged PMT the record keeps the flag handed out last
  PMT expected = carried(std::move(sent));
  if (received.sections == kMaxSections) {
    TORNEL_FUZZ_CHECK(received.table.esList.size() <= expected.esList.size());
    expected.esList.resize(received.table.esList.size());
  }
  TORNEL_FUZZ_CHECK(received.table == expected);
}

ServiceTables makeServiceTables(ByteSource& source) {
  ServiceTables service;
  service.pat = makePat(source);
  service.sdt = makeSdt(source);
  return service;
}

ServiceWorkRecord makeWork(const ServiceTables& service, ByteSource& source) {
  ServiceWorkRecord work(service);
  work.identity.outputSID = source.number();
  work.identity.serviceName = source.text(300);
  work.identity.transportStreamId = source.number();
  work.identity.originalNetworkId = source.number();
  work.pmt = makePmt(source);
  return work;
}

/** As a file may have left them. */
StoredTables makeStored(ByteSource& source) {
  TableStore store;
  store.pat.version = source.number();
  store.sdt.version = source.number();
  store.pmt.version = source.number();
  return StoredTables(store);
}

void synthesise(StoredTables& stored, ServiceWorkRecord work) {
  const auto pmtPid = findProgramPid(work.pmt.programNumber, work.service.pat) & 0x1FFF;
  const bool currentNext = work.pmt.currentNext;
  TORNEL_FUZZ_CHECK(synthPAT(work, stored) == 0);
  TORNEL_FUZZ_CHECK(synthSDT(work, stored) == 0);
  TORNEL_FUZZ_CHECK(synthPMT(work, stored) == 0);
  const OutputTables& output = work.outputTables;
  const auto pat = receivePat(output.patPackets);
  TORNEL_FUZZ_CHECK(pat.sections == 1 && pat.table == carried(output.dvbTables.pat));
  const auto sdt = receiveSdt(output.sdtPackets);
  TORNEL_FUZZ_CHECK(sdt.sections == 1 && sdt.table == carried(output.dvbTables.sdt));
  checkPmt(receivePmt(output.pmtPackets, pmtPid), output.dvbTables.pmt, currentNext);
  TORNEL_FUZZ_CHECK(test::faultOfPat(output.patPackets).empty());
  TORNEL_FUZZ_CHECK(test::faultOfSdt(output.sdtPackets).empty());
  TORNEL_FUZZ_CHECK(test::faultOfPmt(output.pmtPackets, pmtPid).empty());
}

}  // namespace
}  // namespace tevra::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace tevra::fuzz;  // NOLINT(google-build-using-namespace): the target itself
  ByteSource source(bytes, size);
  const tevra::ServiceTables service = makeServiceTables(source);
  tevra::ServiceWorkRecord work = makeWork(service, source);
  tevra::StoredTables stored = makeStored(source);
  synthesise(stored, work);
  synthesise(stored, work);  // the tables known, the versions kept
  work.identity.serviceName = source.text(300);
  synthesise(stored, work);
  return 0;
}
