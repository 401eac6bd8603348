#pragma once

#include "control/si_control_handler.h"

namespace tevra::bench {

/** The daemon's handler, which takes its databases with it when it goes. */
class OwnHandler : public SIControlSrvHandler {
 public:
  /** Of an MPTS that does not exist, unless one is named: it tells nobody. */
  explicit OwnHandler(int32_t mptsIndex = -1) : SIControlSrvHandler(mptsIndex) {}
  ~OwnHandler() override { delete conflictFreeDatabase(); }
  OwnHandler(const OwnHandler&) = delete;
  OwnHandler& operator=(const OwnHandler&) = delete;
};

}  // namespace tevra::bench
