#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "cfdb/pid_allocator.h"
#include "cfdb/time_offset.h"
#include "records/records.h"
#include "records/table_slot.h"
#include "store/eit_versions.h"

namespace tevra {

/**
 * The tables of a module chain rewritten so that they can be multiplexed with other inputs: PIDs
 * from the chain's pool, CA descriptors rewritten or stripped, EITs re-versioned and moved to the
 * system clock.
 *
 * Callable from any thread. Each kind of table has a lock of its own, held for the whole operation;
 * those of PidAllocator, TimeOffset and EITVersions are taken inside it, never around it. The EIT
 * locks are recursive.
 *
 * Setters return true and copy the stored table to their out parameter. Getters return false and
 * leave `out` untouched when nothing is held.
 */
class ConflictFreeDB {
 public:
  /** Loads the PID mapping from its file; see PidAllocator. What EITs are restamped with must
   * live as long as the database is used. */
  ConflictFreeDB(int32_t chainIndex, TimeOffset& timeOffset, EITVersions& eitVersions);

  /** A PAT of another transport stream restarts the PID mapping. Saves the mapping if it grew. */
  bool setConflictFreePAT(PAT& out, const PAT& in) EXCLUDES(pats_);

  /** Stored unchanged: service ids are not remapped. */
  bool setConflictFreeSDT(const SDT& in) EXCLUDES(sdts_);

  /**
   * Keeps the streams whose type isCarriedStreamType; the others get no PID. Stored under the
   * programme number. Saves the PID mapping if it grew.
   */
  bool setConflictFreePMT(PMT& out, const PMT& in) EXCLUDES(pmts_);

  /** PIDs that a CAT allocates reach the file only with the next PAT or PMT: docs/contract.md, "The
   * three files". */
  bool setConflictFreeCAT(CAT& out, const CAT& in) EXCLUDES(cats_);

  /** Stored unchanged. */
  bool setConflictFreeTOT(TOT& out, const TOT& in) EXCLUDES(tots_);

  ///@{
  /** Not implemented (docs/contract.md, "NIT and BAT"): one level-3 line, true, `out` untouched. */
  bool setConflictFreeNIT(NIT& out, const NIT& in) EXCLUDES(nits_);
  bool setConflictFreeBAT(BAT& out, const BAT& in) EXCLUDES(bats_);
  bool setConflictFreeEIT(EIT& out, const EIT& in);
  ///@}

  ///@{
  /** The table as its setter left it. */
  [[nodiscard]] bool getConflictFreePAT(PAT& out) EXCLUDES(pats_);
  [[nodiscard]] bool getConflictFreeSDT(SDT& out) EXCLUDES(sdts_);
  [[nodiscard]] bool getConflictFreeCAT(CAT& out) EXCLUDES(cats_);
  [[nodiscard]] bool getConflictFreeTOT(TOT& out) EXCLUDES(tots_);
  ///@}

  ///@{
  /** Never filled: one level-3 line, false. */
  [[nodiscard]] bool getConflictFreeNIT(NIT& out) EXCLUDES(nits_);
  [[nodiscard]] bool getConflictFreeBAT(BAT& out) EXCLUDES(bats_);
  ///@}

  /** The stored PMT, CA descriptors included. */
  [[nodiscard]] bool getConflictFreePMT(PMT& out, int32_t inputSID) EXCLUDES(pmts_);

  /** The stored PMT without any CA descriptor. Saves the PID mapping if it is unsaved. */
  [[nodiscard]] bool getOutputPMT(PMT& out, int32_t inputSID) EXCLUDES(pmts_);

  ///@{
  /**
   * Restamp `in`: a new version per EIT, event times moved by the time offset whether or not
   * that is valid. The result is stored; what `in` does not mention stays. The restart counter of
   * every service in `in` is reset.
   */
  void restampEITpf(const EITMap& in);
  void restampEITsch(const EITMap& in);
  ///@}

  ///@{
  /** Restamp `in`, empty `out` and copy the result to it. A full schedule takes megabytes: those
   * who need one EIT at a time restamp, then get. */
  bool getConflictFreeEITpf(EITMap& out, const EITMap& in);
  bool getConflictFreeEITsch(EITMap& out, const EITMap& in);
  ///@}

  ///@{
  /** One restamped EIT, by the keys it was given under. */
  [[nodiscard]] bool getRestampedEITpf(EIT& out, int32_t serviceId, int32_t tableId);
  [[nodiscard]] bool getRestampedEITsch(EIT& out, int32_t serviceId, int32_t tableId);
  ///@}

  /** Empties everything but the TOT and the PID mapping, which are meant to survive. */
  void clearConflictFreeDB() EXCLUDES(pats_, sdts_, cats_, pmts_, nits_, bats_);

  /** As PidAllocator::getConflictFreePID: allocates for an input PID that is new. */
  [[nodiscard]] uint16_t getConflictFreePID(int32_t inputPid) {
    return pids_.getConflictFreePID(inputPid);
  }

  /** As PidAllocator::getInputPID: kUnknownPid for an output PID that was never handed out. */
  [[nodiscard]] int32_t getInputPID(int32_t outputPid) { return pids_.getInputPID(outputPid); }

  /** As PidAllocator::resolveInputPids. */
  void resolveInputPids(std::vector<PIDItem>& items) { pids_.resolveInputPids(items); }

 private:
  using GetRestamped = bool (ConflictFreeDB::*)(EIT&, int32_t serviceId, int32_t tableId);

  PMT makeConflictFreePMT(const PMT& in);
  void restampAll(EITMap& store, const EITMap& in, const char* caller);
  void restampEIT(EIT& out, const EIT& in, int32_t version);
  void copyRestamped(EITMap& out, const EITMap& in, GetRestamped get);

  TimeOffset& timeOffset_;
  EITVersions& eitVersions_;
  PidAllocator pids_;

  TableSlot<PAT> pats_;
  TableSlot<SDT> sdts_;
  TableSlot<CAT> cats_;
  GuardedTables<std::map<int32_t, PMT>> pmts_;  ///< by input service id
  TableSlot<NIT> nits_;
  TableSlot<BAT> bats_;
  TableSlot<TOT> tots_;
  GuardedTables<EITMap, RecursiveMutex> eitPresentFollowing_ ACQUIRED_BEFORE(eitSchedule_);
  GuardedTables<EITMap, RecursiveMutex> eitSchedule_;
};

}  // namespace tevra
