#include "control/control_processor.h"

#include <exception>
#include <utility>

#include "platform/module_utils.h"
#include "records/frame_protocol.h"

namespace tevra {
namespace {

/** Logs what the handler raised: the client has its text as the answer, operators have the line. */
class FailedCallLog : public apache::thrift::TProcessorEventHandler {
 public:
  /** Called while the exception is handled. */
  void handlerError(void* /*context*/, const char* method) override {
    try {
      throw;
    } catch (const std::exception& exception) {
      log_function(kLogError, kNoTag, "Call of %s failed. EXCEPTION: %s", method, exception.what());
    }
  }
};

}  // namespace

using apache::thrift::TProcessor;
using apache::thrift::protocol::TProtocol;

std::shared_ptr<TProcessor> makeControlProcessor(
    const std::shared_ptr<thrift::in_module::im_SIControlSrvIf>& handler) {
  // The protocol that FrameProtocolFactory makes: only then does Thrift take its fast path.
  using Processor = thrift::in_module::im_SIControlSrvProcessorT<FrameProtocol>;
  auto processor = std::make_shared<Processor>(handler);
  processor->setEventHandler(std::make_shared<FailedCallLog>());
  return std::make_shared<GuardedProcessor>(std::move(processor));
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
