#pragma once

#include <cstdint>
#include <string>

#include "records/records.h"
#include "synth/pid_items.h"

namespace tevra {

/**
 * One service on its way to an output: lives for one call. From outputSID on everything is 0 or
 * empty unless the output leaves the chain here.
 */
struct ServiceWorkRecord {
  int32_t inputSID = 0;           ///< programme number in the input
  PAT pat;                        ///< conflict-free input PAT
  SDT sdt;                        ///< input SDT
  PMT pmt;                        ///< conflict-free input PMT, then the filtered one
  PidList pidItems;               ///< what the output carries
  OutputTables outputTables;      ///< the synthesised tables
  int32_t outputSID = 0;          ///< service id of the output
  std::string serviceName;        ///< UTF-8
  int32_t transportStreamId = 0;  ///< of the output's PAT and SDT
  int32_t outputParam = 0;        ///< travels along, read by nothing here
  int32_t originalNetworkId = 0;  ///< of the output's SDT
};

}  // namespace tevra
