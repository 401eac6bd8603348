#include "control/serve_for_ever.h"

#include <unistd.h>

#include <exception>
#include <utility>

#include "platform/module_utils.h"

namespace tevra {
namespace {

constexpr unsigned kPauseSeconds = 1;

}  // namespace

RestartingServer::RestartingServer(std::shared_ptr<apache::thrift::server::TServer> server,
                                   std::shared_ptr<thrift::TStartObserver> observer)
    : server_(std::move(server)), observer_(std::move(observer)) {}

void RestartingServer::run() {
  for (;;) {
    serveOnce();
    sleep(kPauseSeconds);
  }
}

void RestartingServer::serveOnce() {
  try {
    server_->serve();
    log_function(kLogError, kNoTag, "Control server stopped accepting, starting it again");
  } catch (const std::exception& exception) {
    if (!observer_->started()) {
      throw;
    }
    log_function(kLogError, kNoTag, "Control server failed, starting it again. EXCEPTION: %s",
                 exception.what());
  }
}

}  // namespace tevra
