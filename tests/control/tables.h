#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/records.h"
#include "tests/support/tables.h"

/** The tables of small services, and a request for an output. */
namespace tevra::test {

/** One H.264 and one MPEG audio stream on `firstPid` and the next, PCR with the video. */
inline PMT pmtOf(int32_t programNumber, int32_t firstPid) {
  PMT pmt =
      makePmt(programNumber, firstPid, {makeStream(27, firstPid), makeStream(4, firstPid + 1)});
  pmt.version = 5;
  pmt.currentNext = true;
  return pmt;
}

/** Transport stream 0x0101 with one programme per PMT PID: numbers from 1 up. */
inline PAT patOf(const std::vector<int32_t>& pmtPids) {
  PAT pat = makePat(0x0101, {});
  pat.version = 2;
  pat.currentNext = true;
  for (const int32_t pid : pmtPids) {
    PATProgram& program = pat.programs.emplace_back();
    program.programNumber = static_cast<int32_t>(pat.programs.size());
    program.pid = pid;
  }
  return pat;
}

/** One television service, with a service descriptor. */
inline SDT sdtOf(int32_t serviceId) {
  SDT sdt =
      makeSdt({makeService(serviceId, {makeDescriptor(0x48, std::string("\x01\x01P\x01N", 5))})});
  sdt.transportStreamId = 0x0101;
  sdt.version = 3;
  sdt.originalNetworkId = 0x0202;
  sdt.services[0].runningStatus = 4;
  return sdt;
}

/** The key of the answer to outputOf. */
inline constexpr int32_t kGlobalSID = 77;

/** The output of one service that leaves the chain here as service 1201 named `name`. */
inline SrvOutputRequest outputOf(int32_t inputSID, const std::string& name) {
  SrvOutputRequest request;
  request.inputSID = inputSID;
  OutputServiceDescription& output = request.outputs[0];
  output.globalSID = kGlobalSID;
  output.outputSID = 1201;
  output.serviceName = name;
  output.transportStreamId = 0x0A0A;
  output.originalNetworkId = 0x0B0B;
  LastNodeSettings& node = request.lastNodeSettings[kGlobalSID].emplace_back();
  node.globalSID = kGlobalSID;
  node.uniqueSID = 5;
  return request;
}

}  // namespace tevra::test
