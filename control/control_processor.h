#pragma once

#include <memory>

#include <thrift/TProcessor.h>

#include "im_SIControlSrv.h"

namespace tevra {

/**
 * The processor of im_SIControlSrv over `handler`, and around it a guard: an exception that is not
 * Thrift's (memory that runs out, for example) is logged at level
 * 3 and closes the connection it came over, no more. Thrift's own exceptions pass to the server,
 * which does the same.
 */
[[nodiscard]] std::shared_ptr<apache::thrift::TProcessor> makeControlProcessor(
    const std::shared_ptr<thrift::in_module::im_SIControlSrvIf>& handler);

/** The guard alone. */
class GuardedProcessor : public apache::thrift::TProcessor {
 public:
  /** `guarded` makes the calls. */
  explicit GuardedProcessor(std::shared_ptr<apache::thrift::TProcessor> guarded);

  /**
   * One call: what `guarded` returns, or false, which closes the connection, after an exception
   * that is not Thrift's. Thrift's own pass.
   */
  bool process(std::shared_ptr<apache::thrift::protocol::TProtocol> in,
               std::shared_ptr<apache::thrift::protocol::TProtocol> out,
               void* connectionContext) override;

 private:
  std::shared_ptr<apache::thrift::TProcessor> guarded_;
};

}  // namespace tevra
