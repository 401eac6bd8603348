#include "tests/control/control_client.h"

#include <poll.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "control/control_server.h"

namespace tevra::test {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransportException;

constexpr const char* kHost = "127.0.0.1";
constexpr int kPatienceMs = 5000;

/** Its thread serves until the process ends. */
void startOnce() {
  static const ThreadedSimpleServer server = startControlServer(0);
  if (server.empty()) {
    throw std::logic_error("no control server");
  }
}

}  // namespace

ControlClient::ControlClient(int port)
    : socket_(std::make_shared<TSocket>(kHost, port)),
      transport_(std::make_shared<TFramedTransport>(socket_)) {
  // A client that closes must not cut off what it has sent.
  socket_->setLinger(false, 0);
  socket_->setRecvTimeout(4 * kPatienceMs);
  client_ = std::make_unique<thrift::in_module::im_SIControlSrvClient>(
      std::make_shared<TBinaryProtocol>(transport_));
  transport_->open();
}

bool ControlClient::hasAnswerWithin(int milliseconds) {
  pollfd descriptor = {socket_->getSocketFD(), POLLIN, 0};
  return poll(&descriptor, 1, milliseconds) == 1;
}

RawConnection::RawConnection(int port) : socket_(kHost, port) {
  socket_.setLinger(false, 0);
  socket_.setRecvTimeout(kPatienceMs);
  socket_.open();
}

void RawConnection::send(const std::string& bytes) {
  socket_.write(reinterpret_cast<const uint8_t*>(bytes.data()),
                static_cast<uint32_t>(bytes.size()));
}

std::string RawConnection::receive(size_t length) {
  std::string bytes(length, '\0');
  apache::thrift::transport::readAll(socket_, reinterpret_cast<uint8_t*>(bytes.data()),
                                     static_cast<uint32_t>(length));
  return bytes;
}

bool RawConnection::isClosedByServer() {
  try {
    uint8_t byte = 0;
    return socket_.read(&byte, 1) == 0;
  } catch (const TTransportException& exception) {
    // A reset is a close, too; running out of patience is not.
    return exception.getType() != TTransportException::TIMED_OUT;
  }
}

bool waitForLine(int level, const std::string& beginning) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMs);
  while (std::chrono::steady_clock::now() < end) {
    for (const fake::LogLine& line : fake::logLines()) {
      if (line.level == level && line.text.rfind(beginning, 0) == 0) {
        return true;
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

ControlServerTest::ControlServerTest() {
  startOnce();
  fake::clearLog();
}

}  // namespace tevra::test
