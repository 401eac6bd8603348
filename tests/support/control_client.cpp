#include "tests/support/control_client.h"

#include <poll.h>

#include <thrift/TConfiguration.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "tests/support/patience.h"

namespace tevra::test {
namespace {

using apache::thrift::TConfiguration;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TSocket;

constexpr int kMaxSize = 256 * 1024 * 1024;

}  // namespace

ControlClient::ControlClient(int32_t mptsIndex) {
  const auto limits = std::make_shared<TConfiguration>(kMaxSize, kMaxSize);
  socket_ = std::make_shared<TSocket>("127.0.0.1", kFirstControlPort + mptsIndex, limits);
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(kPatience);
  socket_->setSendTimeout(static_cast<int>(milliseconds.count()));
  socket_->setRecvTimeout(static_cast<int>(milliseconds.count()));
  transport_ = std::make_shared<TFramedTransport>(socket_, limits);
  service_ = std::make_unique<Service>(std::make_shared<TBinaryProtocol>(transport_));
  transport_->open();
}

ControlClient::~ControlClient() {
  transport_->close();
}

bool ControlClient::hasAnswerWithin(int milliseconds) {
  pollfd descriptor = {socket_->getSocketFD(), POLLIN, 0};
  return poll(&descriptor, 1, milliseconds) == 1;
}

}  // namespace tevra::test
