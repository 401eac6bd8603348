#include "control/control_transport.h"

#include <arpa/inet.h>
#include <malloc.h>

#include <utility>

#include <thrift/transport/TSocket.h>

#include "records/frame_protocol.h"

namespace tevra {
namespace {

using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TTransportException;

constexpr int32_t kLargeFrame = 1024 * 1024;

/**
 * The arguments of a large call lie below what was stored from them, so that by itself the heap
 * cannot shrink when they are freed.
 */
void giveBackFreeMemory() {
#if defined(__GLIBC__)
  (void)malloc_trim(0);
#endif
}

/** With the texts of the library, which knows no claim. */
void checkFrameSize(int32_t size) {
  const Refusal refusal = {"bytes of a frame", size, kMaxFrameSize};
  if (size < 0) {
    throw Refused(TTransportException("Frame size has negative value"), refusal);
  }
  if (size > kMaxFrameSize) {
    throw Refused(
        TTransportException(TTransportException::CORRUPTED_DATA, "Received an oversized frame"),
        refusal);
  }
}

}  // namespace

ControlTransport::ControlTransport(std::shared_ptr<TTransport> transport)
    : TFramedTransport(std::move(transport), DEFAULT_BUFFER_SIZE, kLargeFrame) {
  startFromNothing();
}

bool ControlTransport::readFrame() {
  if (lastWasLarge_) {
    giveBackFreeMemory();
  }
  int32_t size = 0;
  lastWasLarge_ = false;
  if (!readSize(size)) {
    return false;
  }
  checkFrameSize(size);
  if (static_cast<uint32_t>(size) > rBufSize_) {
    rBuf_.reset(new uint8_t[static_cast<size_t>(size)]);
    rBufSize_ = static_cast<uint32_t>(size);
  }
  transport_->readAll(rBuf_.get(), static_cast<uint32_t>(size));
  setReadBuffer(rBuf_.get(), static_cast<uint32_t>(size));
  lastWasLarge_ = size > kLargeFrame;
  resetConsumedMessageSize();
  return true;
}

/** The head of a frame, and whether there is another one. */
bool ControlTransport::readSize(int32_t& size) {
  uint32_t head = 0;
  auto* const bytes = reinterpret_cast<uint8_t*>(&head);
  const uint32_t first = transport_->read(bytes, sizeof head);
  if (first == 0) {
    return false;
  }
  transport_->readAll(bytes + first, sizeof head - first);
  size = static_cast<int32_t>(ntohl(head));
  return true;
}

uint32_t ControlTransport::readEnd() {
  const uint32_t size = TFramedTransport::readEnd();
  if (rBase_ == nullptr) {
    startFromNothing();
  }
  return size;
}

// NOLINTNEXTLINE(readability-const-return-type): the library's
const std::string ControlTransport::getOrigin() const {
  constexpr const char* kUnknown = "unknown";
  const auto* socket = dynamic_cast<const TSocket*>(transport_.get());
  if (socket == nullptr) {
    return kUnknown;
  }
  const std::string address = socket->getPeerAddress();
  if (address.empty()) {
    return kUnknown;
  }
  const std::string port = ":" + std::to_string(socket->getPeerPort());
  const std::string mapped = "::ffff:";  // IPv4 on a socket that takes both
  if (address.rfind(mapped, 0) == 0) {
    return address.substr(mapped.size()) + port;
  }
  return address.find(':') == std::string::npos ? address + port : "[" + address + "]" + port;
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
