#include "tests/tools/support/fake_daemon_server.h"

#include <future>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/server/TSimpleServer.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>

namespace tevra::tools::test {
namespace {

using apache::thrift::TConfiguration;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TServerSocket;
using apache::thrift::transport::TTransport;

constexpr int kMaxMessageSize = 100 * 1024 * 1024;
constexpr int kMaxFrameSize = 64 * 1024 * 1024;

class FramedTransportFactory : public apache::thrift::transport::TTransportFactory {
 public:
  std::shared_ptr<TTransport> getTransport(std::shared_ptr<TTransport> transport) override {
    return std::make_shared<TFramedTransport>(
        transport, std::make_shared<TConfiguration>(kMaxMessageSize, kMaxFrameSize));
  }
};

class ListeningObserver : public apache::thrift::server::TServerEventHandler {
 public:
  explicit ListeningObserver(std::shared_ptr<TServerSocket> socket) : socket_(std::move(socket)) {}

  void preServe() override { port.set_value(socket_->getPort()); }

  std::promise<int> port;

 private:
  std::shared_ptr<TServerSocket> socket_;
};

}  // namespace

FakeDaemonServer::FakeDaemonServer() : daemon_(std::make_shared<RecordingDaemon>()) {
  const auto socket = std::make_shared<TServerSocket>("127.0.0.1", 0);
  const auto observer = std::make_shared<ListeningObserver>(socket);
  server_ = std::make_shared<apache::thrift::server::TSimpleServer>(
      std::make_shared<thrift::in_module::im_SIControlSrvProcessor>(daemon_), socket,
      std::make_shared<FramedTransportFactory>(),
      std::make_shared<apache::thrift::protocol::TBinaryProtocolFactory>());
  server_->setServerEventHandler(observer);
  thread_ = std::thread([this] { server_->serve(); });
  port_ = observer->port.get_future().get();
}

FakeDaemonServer::~FakeDaemonServer() {
  server_->stop();
  thread_.join();
}

}  // namespace tevra::tools::test
