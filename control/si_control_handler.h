#pragma once

#include <cstdint>
#include <map>

#include "cfdb/conflict_free_db.h"
#include "cfdb/time_offset.h"
#include "im_SIControlSrv.h"
#include "inputdb/input_table_db.h"
#include "records/records.h"
#include "store/eit_versions.h"
#include "store/main_task_client.h"
#include "store/table_stores.h"

namespace tevra {

/**
 * The control service of one MPTS. Every incoming table takes the same road: stored as received,
 * made conflict-free, told to MainTask, saved where it must survive.
 *
 * All calls run on the one server thread. No lock is held across a notification: what has one gives
 * it back before it returns. A failed notification or file never fails a call.
 */
class SIControlSrvHandler : public thrift::in_module::im_SIControlSrvIf {
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

  /** A record with an empty name. */
  void getSIData(SIService& result) override;

  /** Logs the name at level 7 and keeps nothing. Always true. */
  bool SISetData(const SIService& data) override;

  /** Command 0 resets the databases and the time offset; the table stores stay. Always true. */
  bool sendCmd(int32_t command) override;

  /** Stored, made conflict-free and notified so; the PID mapping is saved if it grew. */
  void setPAT(const PAT& pat) override;

  /** Stored and notified as it came. */
  void setSDT(const SDT& sdt) override;

  /** As setPAT, by programme number. */
  void setPMT(const PMT& pmt) override;

  /** Only stored, with a trace line of level 3: docs/contract.md, "NIT and BAT". Always true. */
  bool setNIT(const NIT& nit) override;

  /**
   * Stored. With a set system clock it gives the time offset; when that is the first since start
   * or reset, or differs by 60 s or more from the one in use, all stored EITs are restamped and
   * notified and their versions saved. The TOT itself is notified last, as it came.
   */
  void setTOT(const TOT& tot) override;

  /** As setNIT. */
  bool setBAT(const BAT& bat) override;

  /** As setPAT, but the PIDs that it allocates are saved only with the next PAT or PMT. */
  void setCAT(const CAT& cat) override;

  ///@{
  /** EITs are restamped and notified from the first TOT on that has met a set system clock. */
  void setEITPresentFollowing(const EITMap& eits) override;
  void setEITSchedule(const EITMap& eits) override;
  ///@}

  /** See OutputData::getSrvOutputData. Nothing is notified. */
  void getSrvOutputData(std::map<int32_t, SPTSConfiguration>& answer,
                        const SrvOutputRequest& request) override;

  /** Offered to the platform's other tasks; no control call uses it. */
  bool notifyNIM(int32_t value);

 protected:
  /** With MainTask on another port; 0 for none: nothing is asked for and nobody told. */
  SIControlSrvHandler(int32_t mptsIndex, uint16_t notificationPort);

  /** Never released, unless a derived class does: one whose objects come and go. */
  [[nodiscard]] ConflictFreeDB* conflictFreeDatabase() { return conflictFreeDatabase_; }

 private:
  using GetRestamped = bool (ConflictFreeDB::*)(EIT&, int32_t serviceId, int32_t tableId);
  using Notify = bool (*)(uint16_t port, const EIT&, Patience&);

  void reset();
  template <class Restamp>
  auto savedIfItFails(Restamp restamp);
  bool restampStoredEITs();
  void restampPresentFollowing(const EITMap& eits);
  void restampSchedule(const EITMap& eits);
  void notifyRestamped(const EITMap& eits, GetRestamped get, Notify notify);

  InputTableDB inputDatabase_;
  ConflictFreeDB* conflictFreeDatabase_ =
      nullptr;  ///< never released: lives as long as the process
  NotificationTarget startupTarget_;
  TimeOffset timeOffset_;
  uint16_t notifyPort_ = 0;
  Patience patience_;  ///< of the control call being served, where that may notify more than once
  TableStores tableStores_;
  EITVersions eitVersions_;
};

}  // namespace tevra
