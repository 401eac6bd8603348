#include "control/control_transport.h"

#include <malloc.h>

#include <utility>

#include <thrift/TConfiguration.h>

namespace tevra {
namespace {

using apache::thrift::TConfiguration;
using apache::thrift::transport::TTransport;

constexpr uint32_t kLargeFrame = 1024 * 1024;

std::shared_ptr<TConfiguration> limits() {
  auto configuration = std::make_shared<TConfiguration>();
  configuration->setMaxFrameSize(kMaxFrameSize);
  return configuration;
}

/**
 * The arguments of a large call lie below what was stored from them, so that by itself the heap
 * cannot shrink when they are freed.
 */
void giveBackFreeMemory() {
#if defined(__GLIBC__)
  (void)malloc_trim(0);
#endif
}

}  // namespace

ControlTransport::ControlTransport(std::shared_ptr<TTransport> transport)
    : TFramedTransport(std::move(transport), DEFAULT_BUFFER_SIZE, kLargeFrame, limits()) {
  startFromNothing();
}

bool ControlTransport::readFrame() {
  if (lastWasLarge_) {
    giveBackFreeMemory();
  }
  const bool read = TFramedTransport::readFrame();
  lastWasLarge_ = read && static_cast<size_t>(rBound_ - rBase_) > kLargeFrame;
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
