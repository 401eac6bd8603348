#pragma once

#include <cstdint>

#include "records/records.h"
#include "synth/pid_items.h"

namespace tevra {

/** What all outputs of a service in one request share: nobody changes it meanwhile. */
struct ServiceTables {
  int32_t inputSID = 0;  ///< programme number in the input
  PAT pat;               ///< conflict-free input PAT
  SDT sdt;               ///< input SDT
};

/** One output on its way: lives for one call of buildOutput. */
struct ServiceWorkRecord {
  /** Of a service whose `tables` must outlive it. */
  explicit ServiceWorkRecord(const ServiceTables& tables) : service(tables) {}
  explicit ServiceWorkRecord(ServiceTables&& tables) = delete;  // would not outlive it

  const ServiceTables& service;       ///< what it is made from
  OutputServiceDescription identity;  ///< 0 or empty unless the output leaves the chain here
  PMT pmt;                            ///< filtered, conflict-free
  PidList pidItems;                   ///< what the output carries
  OutputTables outputTables;          ///< the synthesised tables
};

}  // namespace tevra
