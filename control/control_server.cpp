#include "control/control_server.h"

#include <pthread.h>

#include <utility>

#include <thrift/concurrency/ThreadFactory.h>
#include <thrift/server/TSimpleServer.h>

#include "control/control_processor.h"
#include "control/control_server_socket.h"
#include "control/control_transport.h"
#include "control/mpts_index.h"
#include "control/serve_for_ever.h"
#include "control/start_observer.h"
#include "control/thrift_output.h"
#include "platform/module_utils.h"
#include "records/frame_protocol.h"

namespace tevra {
namespace {

using apache::thrift::concurrency::Thread;
using apache::thrift::concurrency::ThreadFactory;
using apache::thrift::server::TServer;
using apache::thrift::server::TSimpleServer;

constexpr int kFirstControlPort = 9224;
constexpr size_t kServerStackSize = size_t{1024} * 1024;

/** Sets the stack size that new threads get; returns the former one, 0 when it could not be set. */
size_t exchangeDefaultStackSize(size_t size) {
  pthread_attr_t attributes;
  if (pthread_getattr_default_np(&attributes) != 0) {
    return 0;
  }
  size_t former = 0;
  pthread_attr_getstacksize(&attributes, &former);
  pthread_attr_setstacksize(&attributes, size);
  const int result = pthread_setattr_default_np(&attributes);
  pthread_attr_destroy(&attributes);
  return result == 0 ? former : 0;
}

/** Threads made while it lives get a stack of this size; the library has no way to ask for one. The
 * size is a wish: without it everything else works. */
class DefaultStackSize {
 public:
  explicit DefaultStackSize(size_t size) : former_(exchangeDefaultStackSize(size)) {}
  ~DefaultStackSize() {
    if (former_ != 0) {
      (void)exchangeDefaultStackSize(former_);  // it was good before
    }
  }
  DefaultStackSize(const DefaultStackSize&) = delete;
  DefaultStackSize& operator=(const DefaultStackSize&) = delete;

 private:
  const size_t former_;
};

std::shared_ptr<TServer> makeServer(const std::shared_ptr<SIControlSrvHandler>& handler, int port) {
  return std::make_shared<TSimpleServer>(
      makeControlProcessor(handler), std::make_shared<ControlServerSocket>(port),
      std::make_shared<ControlTransportFactory>(), std::make_shared<FrameProtocolFactory>());
}

std::shared_ptr<Thread> startThread(
    const std::shared_ptr<apache::thrift::concurrency::Runnable>& runnable) {
  const DefaultStackSize stackSize(kServerStackSize);
  constexpr bool kDetached = true;
  std::shared_ptr<Thread> thread = ThreadFactory(kDetached).newThread(runnable);
  thread->start();
  return thread;
}

}  // namespace

ThreadedSimpleServer::~ThreadedSimpleServer() {
  if (thread_ == nullptr) {
    return;
  }
  thread_->join();
  server_.reset();
  log_function(kLogInformation, kNoTag, "Ended threaded simple server");
  thread_.reset();
  handler_.reset();
}

ThreadedSimpleServer startControlServer(int32_t mptsIndex) {
  ThreadedSimpleServer result;
  if (!isMptsIndex(mptsIndex)) {
    log_function(kLogError, kNoTag, "MPTSIndex not valid [%d].", mptsIndex);
    return result;
  }
  redirectThriftOutput();
  const int port = kFirstControlPort + mptsIndex;
  log_function(kLogWarning, kNoTag, "[MPTS%d] Tornel listening on port [%d]", mptsIndex, port);
  result.handler_ = std::make_shared<SIControlSrvHandler>(mptsIndex);
  result.server_ = makeServer(result.handler_, port);
  const auto observer = std::make_shared<thrift::TStartObserver>();
  result.server_->setServerEventHandler(observer);
  result.thread_ = startThread(std::make_shared<RestartingServer>(result.server_, observer));
  observer->waitUntilStarted();
  log_function(kLogInformation, kNoTag, "Started threaded simple server, on port: %d", port);
  return result;
}

}  // namespace tevra
