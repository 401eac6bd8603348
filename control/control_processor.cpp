#include "control/control_processor.h"

#include <exception>
#include <utility>

#include <thrift/protocol/TProtocolException.h>

#include "platform/module_utils.h"
#include "records/frame_protocol.h"

namespace tevra {
namespace {

using apache::thrift::TException;
using apache::thrift::TProcessor;
using apache::thrift::protocol::TProtocol;
using apache::thrift::protocol::TProtocolException;

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

void logRefusal(const Refusal& refusal, const std::shared_ptr<TProtocol>& in) {
  log_function(kLogWarning, kNoTag, "Control call refused: %s [%lld], limit [%lld], client [%s]",
               refusal.unit, static_cast<long long>(refusal.claim),
               static_cast<long long>(refusal.limit), in->getTransport()->getOrigin().c_str());
}

/** Only where `exception` says that a call claimed more than it may. */
void logIfRefusal(const TException& exception, const std::shared_ptr<TProtocol>& in) {
  if (const auto* refusal = dynamic_cast<const Refusal*>(&exception)) {
    logRefusal(*refusal, in);
  }
  const auto* depth = dynamic_cast<const TProtocolException*>(&exception);
  if (depth != nullptr && depth->getType() == TProtocolException::DEPTH_LIMIT) {
    const int64_t limit = in->getRecursionLimit();
    logRefusal({"levels of nesting", limit + 1, limit}, in);
  }
}

}  // namespace

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
    return processTellingRefusals(in, out, connectionContext);
  } catch (const TException&) {
    throw;
  } catch (const std::exception& exception) {
    log_function(kLogError, kNoTag, "Control connection closed. EXCEPTION: %s", exception.what());
  } catch (...) {
    log_function(kLogError, kNoTag, "Control connection closed. EXCEPTION: unknown");
  }
  return false;
}

/** Inside of the guard: the line itself may find no memory. */
bool GuardedProcessor::processTellingRefusals(const std::shared_ptr<TProtocol>& in,
                                              const std::shared_ptr<TProtocol>& out,
                                              void* connectionContext) {
  try {
    return guarded_->process(in, out, connectionContext);
  } catch (const TException& exception) {
    logIfRefusal(exception, in);
    throw;
  }
}

}  // namespace tevra
