#include "tools/listen/notification_server.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <thrift/server/TSimpleServer.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>

#include "im_SINotifySrv.h"
#include "records/frame_protocol.h"
#include "records/global_output.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using apache::thrift::TConfiguration;
using apache::thrift::server::TServerEventHandler;
using apache::thrift::server::TSimpleServer;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TServerSocket;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TTransportException;
using apache::thrift::transport::TTransportFactory;

/** A connection from which nothing comes is given up after this. */
constexpr int kReceiveTimeoutSeconds = 10;
constexpr int kMaxMessageSize = 100 * 1024 * 1024;
// The largest table has 256 sections of 4096 bytes (EN 300 468, 5.1.1), each full of events of 12
// bytes: fewer than 2^17, at about 50 bytes in a message.
constexpr int kMaxFrameSize = 16 * 1024 * 1024;

/** Hands on what each call brings, with the time at which it came. */
class Receiver : public thrift::in_module::im_SINotifySrvIf {
 public:
  explicit Receiver(NotificationServer::Consumer consumer) : consumer_(std::move(consumer)) {}

  void notifyNIM(int32_t value) override { handOn(NimValue{value}); }
  void notifyPAT(const PAT& pat) override { handOn(TableKind::kPat, pat); }
  void notifySDT(const SDT& sdt) override { handOn(TableKind::kSdt, sdt); }
  void notifyPMT(const PMT& pmt) override { handOn(TableKind::kPmt, pmt); }
  void notifyNIT(const NIT& nit) override { handOn(TableKind::kNit, nit); }
  void notifyTOT(const TOT& tot) override { handOn(TableKind::kTot, tot); }
  void notifyBAT(const BAT& bat) override { handOn(TableKind::kBat, bat); }
  void notifyCAT(const CAT& cat) override { handOn(TableKind::kCat, cat); }
  void notifyEITPresentFollowing(const EIT& eit) override {
    handOn(TableKind::kEitPresentFollowing, eit);
  }
  void notifyEITSchedule(const EIT& eit) override { handOn(TableKind::kEitSchedule, eit); }
  void requestConfiguration() override { handOn(ConfigurationRequest()); }

 private:
  void handOn(const Notification::Content& content) {
    consumer_({std::chrono::system_clock::now(), content});
  }
  void handOn(TableKind kind, const SiTable& table) { handOn(NotifiedTable{kind, table}); }

  NotificationServer::Consumer consumer_;
};

/** Takes frames as large as the tables are, and no larger. */
class FramedTransportFactory : public TTransportFactory {
 public:
  std::shared_ptr<TTransport> getTransport(std::shared_ptr<TTransport> transport) override {
    const auto limits = std::make_shared<TConfiguration>(kMaxMessageSize, kMaxFrameSize);
    return std::make_shared<TFramedTransport>(std::move(transport), limits);
  }
};

class ListeningObserver : public TServerEventHandler {
 public:
  ListeningObserver(std::shared_ptr<TServerSocket> socket, std::function<void(int port)> action)
      : socket_(std::move(socket)), action_(std::move(action)) {}

  void preServe() override { action_(socket_->getPort()); }

 private:
  std::shared_ptr<TServerSocket> socket_;
  std::function<void(int port)> action_;
};

}  // namespace

NotificationServer::NotificationServer(const std::string& host, int port, Consumer consumer,
                                       std::function<void(int port)> onListening)
    : address_(host + ":" + std::to_string(port)) {
  globalOutput().setOutputFunction([](const char*) {});
  const auto socket = std::make_shared<TServerSocket>(host, port);
  socket->setRecvTimeout(kReceiveTimeoutSeconds * 1000);
  server_ = std::make_shared<TSimpleServer>(
      std::make_shared<thrift::in_module::im_SINotifySrvProcessor>(
          std::make_shared<Receiver>(std::move(consumer))),
      socket, std::make_shared<FramedTransportFactory>(), std::make_shared<FrameProtocolFactory>());
  server_->setServerEventHandler(
      std::make_shared<ListeningObserver>(socket, std::move(onListening)));
}

void NotificationServer::serve() {
  try {
    server_->serve();
  } catch (const TTransportException& error) {
    const std::string reason = error.what();
    const bool isTaken = reason.find(std::strerror(EADDRINUSE)) != std::string::npos;
    throw ToolError("cannot listen on " + address_ + " (" + reason + "): " +
                    (isTaken
                         ? "end the program that does, MainTask perhaps, or choose another port "
                           "with --set or --port"
                         : "choose an address of this machine with --host, or another port"));
  }
}

void NotificationServer::stop() {
  server_->stop();
}

}  // namespace tevra::tools
