#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <thrift/TProcessor.h>

#include "bench/work.h"
#include "control/si_control_handler.h"

namespace tevra::bench {

/** Calls to the daemon's handler as they come out of frames: decoded, made, the answer encoded. */
class CallWork : public Work {
 public:
  /** Makes a handler and gives it what it needs. */
  using Start = std::function<std::shared_ptr<SIControlSrvHandler>()>;

  /** What the handler held before a run: nothing, or what the run before has left. */
  enum class Before { kNothing, kTheLast };

  /** Each run is the next of `messages`. */
  CallWork(Start start, std::vector<std::string> messages, Before before = Before::kTheLast);

  void prepare() override;
  void run() override;

 private:
  const Start start_;
  std::vector<std::string> messages_;
  size_t next_ = 0;
  const Before before_;
  std::shared_ptr<apache::thrift::TProcessor> processor_;
};

}  // namespace tevra::bench
