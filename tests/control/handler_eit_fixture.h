#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include "tests/control/handler_fixture.h"
#include "tests/fakes/fake_main_task.h"

namespace tevra::test {

/** Fixture: a handler whose system clock stands at 11:59:00 of day kMjd, without MainTask. */
class HandlerEIT : public HandlerTest {
 protected:
  static constexpr int64_t kMjd = 60000;

  HandlerEIT() {
    fake::platform().utcTime = dvbTime(kMjd, 11, 59, 0);
    restart();
  }

  /** A new process on the same files. */
  void restart() {
    handler_ = std::make_unique<SIControlSrvHandler>(0);
    fake::clearLog();
  }

  void setTOT(int hours, int minutes, int seconds) {
    handler_->setTOT(makeTot(dvbTime(kMjd, hours, minutes, seconds)));
  }

  /** A TOT that gives the offset 0. */
  void setSteadyTOT() { setTOT(11, 59, 0); }

  /** The version saved for a sub-table. */
  static int32_t savedVersion(int32_t serviceId, int32_t tableId) {
    return savedEITVersions().at(serviceId).versions.at(tableId);
  }

  std::unique_ptr<SIControlSrvHandler> handler_;
};

/** With a MainTask that comes after the handler, so that it hears of tables alone. */
class NotifiedEIT : public HandlerEIT {
 protected:
  /** The first `count` notifications. */
  std::vector<fake::Notification> notified(size_t count) {
    if (!mainTask_.waitFor(count)) {
      throw std::runtime_error("notifications are missing");
    }
    return mainTask_.received();
  }

  fake::FakeMainTask mainTask_;
};

}  // namespace tevra::test
