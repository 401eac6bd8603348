#pragma once

#include <memory>

#include <thrift/TProcessor.h>

#include "im_SIControlSrv.h"

namespace tevra {

/**
 * The processor of im_SIControlSrv over `handler`. A standard exception of the handler is answered
 * with a TApplicationException, logged at level 3, and the connection stays. Anything else that is
 * raised ends the connection, no more: the guard below sees to what is not Thrift's and tells what
 * a refused call claimed, the server sees to Thrift's own exceptions, which it logs at level 7 if
 * at all.
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
   * that is not Thrift's. Thrift's own pass; of one that is Refused, or that says that a call is
   * nested too deeply, a line of level 4 gives the claim, the limit and the client's address.
   */
  bool process(std::shared_ptr<apache::thrift::protocol::TProtocol> in,
               std::shared_ptr<apache::thrift::protocol::TProtocol> out,
               void* connectionContext) override;

 private:
  bool processTellingRefusals(const std::shared_ptr<apache::thrift::protocol::TProtocol>& in,
                              const std::shared_ptr<apache::thrift::protocol::TProtocol>& out,
                              void* connectionContext);

  std::shared_ptr<apache::thrift::TProcessor> guarded_;
};

}  // namespace tevra
