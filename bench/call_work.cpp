#include "bench/call_work.h"

#include <utility>

#include <thrift/transport/TBufferTransports.h>

#include "control/control_processor.h"
#include "records/frame_protocol.h"

namespace tevra::bench {

using apache::thrift::transport::TMemoryBuffer;

CallWork::CallWork(Start start, std::vector<std::string> messages, Before before)
    : start_(std::move(start)),
      messages_(std::move(messages)),
      before_(before),
      processor_(makeControlProcessor(start_())) {
  run();
}

void CallWork::prepare() {
  next_ = (next_ + 1) % messages_.size();
  if (before_ == Before::kNothing) {
    processor_ = makeControlProcessor(start_());
  }
}

void CallWork::run() {
  std::string& message = messages_[next_];
  const auto in = std::make_shared<TMemoryBuffer>(reinterpret_cast<uint8_t*>(message.data()),
                                                  static_cast<uint32_t>(message.size()));
  const auto out = std::make_shared<TMemoryBuffer>();
  processor_->process(std::make_shared<FrameProtocol>(in), std::make_shared<FrameProtocol>(out),
                      nullptr);
}

}  // namespace tevra::bench
