#include "control/serve_for_ever.h"

#include <unistd.h>

#include <cassert>
#include <exception>

#include "platform/module_utils.h"

namespace tevra {

using apache::thrift::concurrency::Synchronized;

void thrift::TStartObserver::preServe() {
  Synchronized lock(monitor_);
  started_ = true;
  monitor_.notifyAll();
}

void thrift::TStartObserver::waitUntilStarted() {
  Synchronized lock(monitor_);
  while (!started_) {
    monitor_.waitForever();
  }
}

bool thrift::TStartObserver::started() {
  Synchronized lock(monitor_);
  return started_;
}

void serveForEver(apache::thrift::server::TServer& server, thrift::TStartObserver& observer) {
  constexpr unsigned kPauseSeconds = 1;
  assert(server.getEventHandler().get() == &observer);
  for (;; sleep(kPauseSeconds)) {
    try {
      server.serve();
      log_function(kLogError, kNoTag, "Control server stopped accepting, starting it again");
    } catch (const std::exception& exception) {
      if (!observer.started()) {
        throw;
      }
      log_function(kLogError, kNoTag, "Control server failed, starting it again. EXCEPTION: %s",
                   exception.what());
    }
  }
}

}  // namespace tevra
