#pragma once

#include <map>
#include <vector>

#include "records/records.h"
#include "records/table_slot.h"

namespace tevra {

/**
 * The last tables received for the MPTS, as received: before any remapping or restamping.
 *
 * Callable from any thread. Every operation holds the mutex of the kind it touches for its whole
 * duration and works on copies. No operation holds two of them but clear(), which takes its eight
 * with deadlock avoidance, so there is no order to respect. Nothing is written to disk.
 *
 * Setters log one level-7 line, replace whatever is held without comparing versions, and return
 * true. Getters return false and leave `out` untouched when nothing is held, unless they say
 * otherwise. Operations raise std::system_error when a mutex cannot be locked and std::bad_alloc
 * when a copy fails.
 */
class InputTableDB {
 public:
  ///@{
  /** Takes the place of the one held. */
  bool setInputPAT(const PAT& pat);
  bool setInputSDT(const SDT& sdt);
  bool setInputCAT(const CAT& cat);
  bool setInputNIT(const NIT& nit);
  bool setInputBAT(const BAT& bat);
  bool setInputTOT(const TOT& tot);
  ///@}

  /** Stores under `pmt.programNumber`. PMTs of programmes that leave the PAT stay until clear(). */
  bool setInputPMT(const PMT& pmt);

  ///@{
  /**
   * Merge `eits` into what is held, by the map's keys: service and table ids that it does not
   * mention keep what they hold, however old. One level-7 line per EIT besides the setter's own.
   */
  bool setInputEITpf(const EITMap& eits);
  bool setInputEITsch(const EITMap& eits);
  ///@}

  ///@{
  /** A copy of the last one received. */
  [[nodiscard]] bool getInputPAT(PAT& out);
  [[nodiscard]] bool getInputSDT(SDT& out);
  [[nodiscard]] bool getInputCAT(CAT& out);
  [[nodiscard]] bool getInputNIT(NIT& out);
  [[nodiscard]] bool getInputBAT(BAT& out);
  [[nodiscard]] bool getInputTOT(TOT& out);
  ///@}

  /** The PMT stored under `inputSID`. */
  [[nodiscard]] bool getInputPMT(PMT& out, int32_t inputSID);

  /** Appends every PMT to `out` in ascending programme number. */
  [[nodiscard]] bool getInputPMTs(std::vector<PMT>& out);

  ///@{
  /** Empty `out` first, then copy everything; false when nothing is held. */
  [[nodiscard]] bool getInputEITpf(EITMap& out);
  [[nodiscard]] bool getInputEITsch(EITMap& out);
  ///@}

  /** Empties everything but the TOT, which is meant to survive. */
  void clear();

 private:
  TableSlot<PAT> pats_;
  TableSlot<SDT> sdts_;
  TableSlot<CAT> cats_;
  GuardedTables<std::map<int32_t, PMT>> pmts_;  ///< by programme number
  TableSlot<NIT> nits_;
  TableSlot<BAT> bats_;
  TableSlot<TOT> tots_;
  GuardedTables<EITMap> eitPresentFollowing_;
  GuardedTables<EITMap> eitSchedule_;
};

}  // namespace tevra
