#include <memory>
#include <string>
#include <utility>

#include <thrift/concurrency/ThreadFactory.h>
#include <thrift/server/TSimpleServer.h>
#include <thrift/transport/TServerSocket.h>
#include <thrift/transport/TSocket.h>

#include "bench/control_call.h"
#include "bench/no_saves.h"
#include "bench/own_handler.h"
#include "bench/sample_tables.h"
#include "bench/work.h"
#include "control/control_processor.h"
#include "control/control_transport.h"
#include "control/serve_for_ever.h"
#include "im_SIControlSrv.h"
#include "records/frame_protocol.h"

namespace tevra::bench {
namespace {

using apache::thrift::server::TSimpleServer;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TServerSocket;
using apache::thrift::transport::TSocket;
using thrift::in_module::im_SIControlSrvIf;
using Answer = std::map<int32_t, SPTSConfiguration>;

std::shared_ptr<im_SIControlSrvIf> loadedHandler() {
  auto handler = std::make_shared<OwnHandler>();
  handler->setPAT(samplePat());
  handler->setSDT(sampleSdt());
  handler->setPMT(samplePmt(10, 17));
  return handler;
}

class PreparedAnswer : public thrift::in_module::im_SIControlSrvNull {
 public:
  explicit PreparedAnswer(Answer answer) : answer_(std::move(answer)) {}

  void getSrvOutputData(Answer& answer, const SrvOutputRequest& /*request*/) override {
    answer = answer_;
  }

 private:
  const Answer answer_;
};

std::shared_ptr<im_SIControlSrvIf> preparedHandler() {
  Answer answer;
  loadedHandler()->getSrvOutputData(answer, sampleRequest());
  return std::make_shared<PreparedAnswer>(std::move(answer));
}

/** The daemon's server, on a port that the system chooses and a thread of its own. */
class Server {
 public:
  explicit Server(const std::shared_ptr<im_SIControlSrvIf>& handler)
      : socket_(std::make_shared<TServerSocket>("127.0.0.1", 0)),
        server_(std::make_shared<TSimpleServer>(makeControlProcessor(handler), socket_,
                                                std::make_shared<ControlTransportFactory>(),
                                                std::make_shared<FrameProtocolFactory>())),
        thread_(apache::thrift::concurrency::ThreadFactory(false).newThread(server_)) {
    const auto observer = std::make_shared<thrift::TStartObserver>();
    server_->setServerEventHandler(observer);
    thread_->start();
    observer->waitUntilStarted();
  }
  ~Server() {
    server_->stop();
    thread_->join();
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  [[nodiscard]] int port() const { return socket_->getPort(); }

 private:
  std::shared_ptr<TServerSocket> socket_;
  std::shared_ptr<TSimpleServer> server_;
  std::shared_ptr<apache::thrift::concurrency::Thread> thread_;
};

class Connection {
 public:
  explicit Connection(int port)
      : transport_(
            std::make_shared<TFramedTransport>(std::make_shared<TSocket>("127.0.0.1", port))),
        client_(std::make_shared<BareProtocol>(transport_)) {
    transport_->open();
  }

  [[nodiscard]] BareClient& client() { return client_; }

 private:
  std::shared_ptr<TFramedTransport> transport_;
  BareClient client_;
};

/**
 * The client's part and the server's, over loopback. Many, since what the server does after its
 * answer may fall behind the end of a run.
 */
class RoundTrip : public Work {
 public:
  explicit RoundTrip(const std::shared_ptr<im_SIControlSrvIf>& handler) : server_(handler) {
    run();
  }

  void run() override {
    constexpr int kCalls = 100;
    for (int call = 0; call < kCalls; ++call) {
      Answer answer;
      connection_.client().getSrvOutputData(answer, request_);
    }
  }

 private:
  const SrvOutputRequest request_ = sampleRequest();
  const NoSaves noSaves_;
  Server server_;
  Connection connection_{server_.port()};
};

}  // namespace

void addRoundTripWorks(Works& works) {
  works.push_back(
      {"round-trip/100/floor", [] { return std::make_unique<RoundTrip>(preparedHandler()); }});
  works.push_back(
      {"round-trip/100/synthesis", [] { return std::make_unique<RoundTrip>(loadedHandler()); }});
}

}  // namespace tevra::bench
