#include "control/control_transport.h"

#include <utility>

#include <thrift/TConfiguration.h>

namespace tevra {
namespace {

using apache::thrift::TConfiguration;
using apache::thrift::transport::TTransport;

constexpr uint32_t kBufferReclaimThreshold = 1024 * 1024;

std::shared_ptr<TConfiguration> limits() {
  auto configuration = std::make_shared<TConfiguration>();
  configuration->setMaxFrameSize(kMaxFrameSize);
  return configuration;
}

}  // namespace

ControlTransport::ControlTransport(std::shared_ptr<TTransport> transport)
    : TFramedTransport(std::move(transport), DEFAULT_BUFFER_SIZE, kBufferReclaimThreshold,
                       limits()) {
  startFromNothing();
}

bool ControlTransport::readFrame() {
  const bool read = TFramedTransport::readFrame();
  resetConsumedMessageSize();
  return read;
}

uint32_t ControlTransport::readEnd() {
  const uint32_t size = TFramedTransport::readEnd();
  if (rBase_ == nullptr) {
    startFromNothing();
  }
  return size;
}

/** The library starts from a null pointer, and again after giving a buffer back, and adds to it. */
void ControlTransport::startFromNothing() {
  setReadBuffer(&nothing_, 0);
}

std::shared_ptr<TTransport> ControlTransportFactory::getTransport(
    std::shared_ptr<TTransport> transport) {
  return std::make_shared<ControlTransport>(std::move(transport));
}

}  // namespace tevra
