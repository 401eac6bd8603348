#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/support/control_client.h"
#include "tests/system/kill_restart_model.h"

namespace tevra::test {

/**
 * Calls of all kinds whose contents change, in random order, each answer held against the models.
 * Used by one thread at a time.
 */
class RunningLoad {
 public:
  using Service = thrift::in_module::im_SIControlSrvIf;

  explicit RunningLoad(uint32_t seed) : random_(seed) {}

  /** Calls over one connection, `calls` times or until the daemon is gone. */
  void run(int calls = std::numeric_limits<int>::max());

  /** Calls once. Raises what the service raises; the call is then lastCall(). */
  void callOnce(Service& service);

  /** Goes on with a new daemon that has these files. */
  void restart(const std::string& pids, const std::string& tables, const std::string& eits);

  /** The call that was not answered; nothing when all were, or the daemon was gone before. */
  [[nodiscard]] const std::optional<LoadCall>& lastCall() const { return call_; }

  [[nodiscard]] const PidModel& pids() const { return pids_; }
  [[nodiscard]] const TableModel& tables() const { return tables_; }
  [[nodiscard]] const EitModel& eits() const { return eits_; }

  /** What MainTask gets from the answered calls since the restart. */
  [[nodiscard]] const std::vector<EitVersion>& handedOut() const { return handedOut_; }

  /** What was wrong with answers so far. */
  [[nodiscard]] const std::vector<std::string>& complaints() const { return complaints_; }

  [[nodiscard]] int64_t answered() const { return answered_; }

 private:
  int32_t anyOf(int32_t first, int32_t last);
  LoadCall nextCall();
  LoadCall anyPat();
  LoadCall anyPmt();
  LoadCall anyCat();
  LoadCall anyEits();
  LoadCall anyOutput();
  void make(Service& service, const LoadCall& call);
  void check(const LoadCall& call, const SPTSConfiguration& output);
  void checkPids(int32_t service, const SPTSConfiguration& output);
  void complain(const std::string& text) { complaints_.push_back(text); }

  std::mt19937 random_;
  int32_t transportStreamId_ = kTransportStreamId;
  int32_t givenTransportStreamId_ = -1;
  int calls_ = 0;                  ///< made of this daemon
  std::map<int32_t, PMT> inputs_;  ///< that this daemon has, by service
  std::optional<LoadCall> call_;
  PidModel pids_;
  TableModel tables_;
  EitModel eits_;
  std::vector<EitVersion> handedOut_;
  std::vector<std::string> complaints_;
  int64_t answered_ = 0;
};

}  // namespace tevra::test
