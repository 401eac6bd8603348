#include "control/control_server.h"

#include <pthread.h>

#include <functional>
#include <system_error>
#include <utility>

#include <thrift/server/TSimpleServer.h>

#include "control/control_processor.h"
#include "control/control_server_socket.h"
#include "control/control_transport.h"
#include "control/mpts_index.h"
#include "control/serve_for_ever.h"
#include "control/si_control_handler.h"
#include "platform/module_utils.h"
#include "records/frame_protocol.h"
#include "records/global_output.h"

namespace tevra {
namespace {

using apache::thrift::server::TServer;
using apache::thrift::server::TSimpleServer;
using Work = std::function<void()>;

constexpr int kFirstControlPort = 9224;
constexpr size_t kServerStackSize = size_t{1024} * 1024;

void redirectThriftOutput() {
  globalOutput().setOutputFunction(
      [](const char* message) { log_function(kLogDebug, kNoTag, "%s", message); });
}

std::shared_ptr<TServer> makeServer(const std::shared_ptr<SIControlSrvHandler>& handler, int port) {
  return std::make_shared<TSimpleServer>(
      makeControlProcessor(handler), std::make_shared<ControlServerSocket>(port),
      std::make_shared<ControlTransportFactory>(), std::make_shared<FrameProtocolFactory>());
}

/** What a thread begins with. An exception of the work ends the process. */
void* runWork(void* work) noexcept {
  (*std::unique_ptr<Work>(static_cast<Work*>(work)))();
  return nullptr;
}

/** Detached. The stack size is a wish: without it everything else works. */
void startThread(size_t stackSize, Work work) {
  auto owned = std::make_unique<Work>(std::move(work));
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  (void)pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  (void)pthread_attr_setstacksize(&attributes, stackSize);
  pthread_t thread = 0;
  const int error = pthread_create(&thread, &attributes, runWork, owned.get());
  pthread_attr_destroy(&attributes);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), "control server thread");
  }
  (void)owned.release();  // the thread's now
}

}  // namespace

ThreadedSimpleServer::~ThreadedSimpleServer() {
  if (!empty()) {
    log_function(kLogInformation, kNoTag, "Ended threaded simple server");
  }
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
  const auto server = makeServer(std::make_shared<SIControlSrvHandler>(mptsIndex), port);
  const auto observer = std::make_shared<thrift::TStartObserver>();
  server->setServerEventHandler(observer);
  startThread(kServerStackSize, [server, observer] { serveForEver(*server, *observer); });
  result.server_ = server;
  observer->waitUntilStarted();
  log_function(kLogInformation, kNoTag, "Started threaded simple server, on port: %d", port);
  return result;
}

}  // namespace tevra
