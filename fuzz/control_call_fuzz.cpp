// A client that sends any bytes: they go through framing, protocol, processor and handler as they
// would on a connection. Whatever they are, the next client must be served.

#include <algorithm>
#include <cstring>
#include <memory>

#include <thrift/Thrift.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TVirtualTransport.h>

#include "control/control_processor.h"
#include "control/control_transport.h"
#include "fuzz/check.h"
#include "fuzz/isolation.h"
#include "fuzz/owned_handler.h"
#include "fuzz/target.h"
#include "records/frame_protocol.h"

namespace tevra::fuzz {
namespace {

using apache::thrift::TProcessor;
using apache::thrift::transport::TMemoryBuffer;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TVirtualTransport;

/** A connection on which `bytes` arrive before it closes; what is sent goes nowhere. */
class Connection : public TVirtualTransport<Connection> {
 public:
  Connection(const uint8_t* bytes, size_t size) : next_(bytes), left_(size) {}

  bool isOpen() const override { return true; }
  uint32_t read(uint8_t* buffer, uint32_t size) {
    const size_t count = std::min<size_t>(size, left_);
    if (count > 0) {
      std::memcpy(buffer, next_, count);
    }
    next_ += count;
    left_ -= count;
    return static_cast<uint32_t>(count);
  }
  void write(const uint8_t* /*bytes*/, uint32_t /*size*/) {}

 private:
  const uint8_t* next_;
  size_t left_;
};

/** As the server serves a client: call after call until the connection is at an end. */
void serve(TProcessor& processor, const uint8_t* bytes, size_t size) {
  FrameProtocolFactory factory;
  const auto protocol = factory.getProtocol(
      std::make_shared<ControlTransport>(std::make_shared<Connection>(bytes, size)));
  try {
    while (processor.process(protocol, protocol, nullptr)) {
    }
  } catch (const apache::thrift::TException&) {
    // The server closes the connection.
  }
}

}  // namespace
}  // namespace tevra::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace tevra::fuzz;  // NOLINT(google-build-using-namespace): the target itself
  emptyConfigurationRoot();
  const auto handler = std::make_shared<OwnedHandler>();
  const auto processor = tevra::makeControlProcessor(handler);
  serve(*processor, bytes, size);
  tevra::SIService answer;
  handler->getSIData(answer);
  TORNEL_FUZZ_CHECK(answer == tevra::SIService());
  return 0;
}
