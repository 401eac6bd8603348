#include "control/control_processor.h"

#include <exception>
#include <utility>

#include "platform/module_utils.h"
#include "records/frame_protocol.h"

namespace tevra {

using apache::thrift::TProcessor;
using apache::thrift::protocol::TProtocol;

std::shared_ptr<TProcessor> makeControlProcessor(
    const std::shared_ptr<thrift::in_module::im_SIControlSrvIf>& handler) {
  // The protocol that FrameProtocolFactory makes: only then does Thrift take its fast path.
  using Processor = thrift::in_module::im_SIControlSrvProcessorT<FrameProtocol>;
  return std::make_shared<GuardedProcessor>(std::make_shared<Processor>(handler));
}

GuardedProcessor::GuardedProcessor(std::shared_ptr<TProcessor> guarded)
    : guarded_(std::move(guarded)) {}

bool GuardedProcessor::process(std::shared_ptr<TProtocol> in, std::shared_ptr<TProtocol> out,
                               void* connectionContext) {
  try {
    return guarded_->process(std::move(in), std::move(out), connectionContext);
  } catch (const apache::thrift::TException&) {
    throw;
  } catch (const std::exception& exception) {
    log_function(kLogError, kNoTag, "Control connection closed. EXCEPTION: %s", exception.what());
  } catch (...) {
    log_function(kLogError, kNoTag, "Control connection closed. EXCEPTION: unknown");
  }
  return false;
}

}  // namespace tevra
