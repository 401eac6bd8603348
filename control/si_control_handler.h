#pragma once

#include <cstdint>
#include <map>

#include "cfdb/conflict_free_db.h"
#include "cfdb/conflict_free_db_owner.h"
#include "im_SIControlSrv.h"
#include "inputdb/input_table_db.h"
#include "platform/mutex.h"
#include "records/records.h"
#include "store/main_task_client.h"
#include "synth/psi_synthesis.h"

namespace tevra {

/**
 * The control service of one MPTS. Every incoming table takes the same road: stored as received,
 * made conflict-free, told to MainTask, saved where it must survive.
 *
 * All calls run on the one server thread. The three mutexes are taken one at a time, never nested
 * with each other and never held across a notification. A failed notification or file never fails a
 * call.
 */
class SIControlSrvHandler : public thrift::in_module::im_SIControlSrvIf,
                            private ConflictFreeDBOwner,
                            private TableStoreOwner {
 public:
  /**
   * Restores and ages the saved tables and versions, then asks MainTask for its configuration; may
   * take seconds when MainTask does not answer. An index outside 0 to 3 is logged and leaves the
   * handler without notifications.
   */
  explicit SIControlSrvHandler(int32_t mptsIndex);
  ~SIControlSrvHandler() override;
  SIControlSrvHandler(const SIControlSrvHandler&) = delete;
  SIControlSrvHandler& operator=(const SIControlSrvHandler&) = delete;

  /** A record with an empty name: nothing sets it. */
  void getSIData(SIService& result) override;

  /** Logs the name at level 7 and keeps nothing. Always true. */
  bool SISetData(const SIService& data) override;

  /** Command 0 resets the databases and the time offset; the table stores stay. Always true. */
  bool sendCmd(int32_t command) override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  /** Stored, made conflict-free and notified so; the PID mapping is saved if it grew. */
  void setPAT(const PAT& pat) override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  /** Stored and notified as it came. */
  void setSDT(const SDT& sdt) override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  /** As setPAT, by programme number. */
  void setPMT(const PMT& pmt) override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  /** Only stored, with a trace line of level 3: docs/contract.md, "NIT and BAT". Always true. */
  bool setNIT(const NIT& nit) override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  /**
   * Stored. With a set system clock it gives the time offset; when that is the first since start
   * or reset, or differs by 60 s or more from the one in use, all stored EITs are restamped and
   * notified and their versions saved. The TOT itself is notified last, as it came.
   */
  void setTOT(const TOT& tot) override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  /** As setNIT. */
  bool setBAT(const BAT& bat) override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  /** As setPAT, but the PIDs that it allocates are saved only with the next PAT or PMT. */
  void setCAT(const CAT& cat) override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  ///@{
  /** EITs are restamped and notified from the first TOT on that has met a set system clock. */
  void setEITPresentFollowing(const EITMap& eits) override
      EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  void setEITSchedule(const EITMap& eits) override
      EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  ///@}

  /** See OutputData::getSrvOutputData. Nothing is notified. */
  void getSrvOutputData(std::map<int32_t, SPTSConfiguration>& answer,
                        const SrvOutputRequest& request) override
      EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  /** Offered to the platform's other tasks; no control call uses it. */
  bool notifyNIM(int32_t value) EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

 protected:
  /**
   * The database calls back for the time offset and EIT versions: no mutex may be held. It is never
   * released, unless a derived class does: one whose objects come and go.
   */
  [[nodiscard]] ConflictFreeDB* conflictFreeDatabase()
      EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_) {
    return conflictFreeDatabase_;
  }

 private:
  using GetRestamped = bool (ConflictFreeDB::*)(EIT&, int32_t serviceId, int32_t tableId);
  using Notify = bool (*)(uint16_t port, const EIT&, Patience&);

  // ConflictFreeDBOwner
  int64_t timeOffset() override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  bool timeOffsetValid() override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  int32_t selectEITVersion(int32_t serviceId, int32_t tableId) override
      EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  void resetEITRestartCounter(int32_t serviceId) override
      EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  // TableStoreOwner
  int32_t mptsIndex() const override { return mptsIndex_; }
  TableStore& tableStore(int32_t inputProgramNumber) override;
  int writeTableStores() override EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  void restoreTableStores() EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  void restoreEITVersions() EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  void reset() EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  bool updateTimeOffset(const TOT& tot) EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  bool restampStoredEITs() EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  void restampPresentFollowing(const EITMap& eits)
      EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  void restampSchedule(const EITMap& eits) EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  void notifyRestamped(const EITMap& eits, GetRestamped get, Notify notify)
      EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);
  void saveEITVersions() EXCLUDES(tableStoreMutex_, eitVersionMutex_, timeMutex_);

  const int32_t mptsIndex_;
  InputTableDB inputDatabase_;
  ConflictFreeDB* conflictFreeDatabase_ =
      nullptr;  ///< never released: lives as long as the process
  NotificationTarget startupTarget_;

  bool timeOffsetValid_ GUARDED_BY(timeMutex_) = false;
  int64_t timeOffset_ GUARDED_BY(timeMutex_) = 0;  ///< DVB time minus system time, seconds
  bool timeOffsetPending_ GUARDED_BY(timeMutex_) = true;

  Mutex tableStoreMutex_;
  Mutex eitVersionMutex_;
  Mutex timeMutex_;

  uint16_t notifyPort_ = 0;
  Patience patience_;  ///< of the control call being served, where that may notify more than once
  SIService siService_;
  /** Loaded and aged before there is a server thread, then used on that alone; the lock is the
   * file's. */
  TableStoreFile myTableStores_;
  EITTableVersionStoreFile eitVersionStore_ GUARDED_BY(eitVersionMutex_);
};

}  // namespace tevra
