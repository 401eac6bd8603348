#include "bench/control_call.h"

#include "control/control_processor.h"
#include "records/frame_protocol.h"

namespace tevra::bench {

using apache::thrift::transport::TMemoryBuffer;

ControlCall::ControlCall(const std::shared_ptr<thrift::in_module::im_SIControlSrvIf>& handler)
    : processor_(makeControlProcessor(handler)) {}

void ControlCall::process(std::string& message) {
  const auto in = std::make_shared<TMemoryBuffer>(reinterpret_cast<uint8_t*>(message.data()),
                                                  static_cast<uint32_t>(message.size()));
  const auto out = std::make_shared<TMemoryBuffer>();
  processor_->process(std::make_shared<FrameProtocol>(in), std::make_shared<FrameProtocol>(out),
                      nullptr);
}

}  // namespace tevra::bench
