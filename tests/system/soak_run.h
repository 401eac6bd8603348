#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/support/control_client.h"
#include "tests/system/soak_calls.h"
#include "tests/system/soak_eits.h"
#include "tests/system/soak_outputs.h"
#include "tests/system/soak_pids.h"

namespace tevra::test {

/**
 * Random calls to the daemon of the first MPTS, one after another. What each returns and what
 * MainTask is told of it is compared with a model that knows nothing but the calls; where they
 * differ the test ends at once, with the seed and the number of the call.
 */
class SoakRun {
 public:
  /** The daemon has been started in an empty configuration root, after `mainTask`. */
  SoakRun(uint32_t seed, fake::FakeMainTask& mainTask);

  /** Makes the next call. */
  void call();

  /** The daemon has been killed and started again. */
  void daemonRestarted();

  /** What was compared so far. */
  struct Counts {
    int64_t calls = 0;
    int64_t connections = 0;
    int64_t outputs = 0;  ///< in answers, each with its PIDs, three records and their packets
    int64_t notifications = 0;
    int64_t eits = 0;  ///< notifications that were EITs
  };
  [[nodiscard]] const Counts& counts() const { return counts_; }
  [[nodiscard]] const SoakTally& tally() const { return outputs_.tally(); }
  [[nodiscard]] int64_t pidResets() const { return pids_.resets(); }
  [[nodiscard]] int64_t offsetChanges() const { return eits_.offsetChanges(); }

 private:
  void connect();
  void makeCall(SoakCalls::Call call);

  // One for each kind of call: make it, follow it in the model, say what MainTask must be told.
  void setPat();
  void setSdt();
  void setPmt();
  void setCat();
  void setTot();
  void setEits(SoakEits::Kind kind);
  void sendCommand();
  void setData();
  void getData();
  void getOutputs();

  template <class Table>
  void expect(const char* method, Table fake::Notification::*member, const Table& table);
  void expectEits(SoakEits::Kind kind, const SoakEits::Restamped& eits);

  void compareNotifications();
  [[nodiscard]] bool isExpected(const fake::Notification& expected, const fake::Notification& got);
  [[nodiscard]] std::string where() const;

  const uint32_t seed_;
  fake::FakeMainTask& mainTask_;
  std::optional<ControlClient> client_;
  SoakCalls calls_;
  SoakCalls::Call call_ = SoakCalls::Call::kGetData;

  SoakPids pids_;
  SoakTables tables_;
  SoakOutputs outputs_;
  SoakEits eits_;
  std::vector<fake::Notification> expected_;
  Counts counts_;
};

}  // namespace tevra::test
