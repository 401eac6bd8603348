#pragma once

#include "control/si_control_handler.h"

namespace tevra::fuzz {

/** A handler that ends with its databases, so that millions of them may come and go. */
class OwnedHandler : public SIControlSrvHandler {
 public:
  OwnedHandler() : SIControlSrvHandler(0) {}
  ~OwnedHandler() override { delete conflictFreeDatabase(); }
};

}  // namespace tevra::fuzz
