#pragma once

#include "bench/no_saves.h"
#include "control/si_control_handler.h"

namespace tevra::bench {

/** An MPTS that does not exist: the handler tells nobody. */
inline constexpr int32_t kUntoldMpts = -1;

/** The daemon's handler, but for the table store file, which it never writes. */
class UnsavingHandler : public SIControlSrvHandler {
 public:
  using SIControlSrvHandler::SIControlSrvHandler;
  ~UnsavingHandler() override { delete conflictFreeDatabase(); }
  UnsavingHandler(const UnsavingHandler&) = delete;
  UnsavingHandler& operator=(const UnsavingHandler&) = delete;

 private:
  const NoSaves noSaves_;
};

}  // namespace tevra::bench
