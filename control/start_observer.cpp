#include "control/start_observer.h"

namespace tevra::thrift {

using apache::thrift::concurrency::Synchronized;

void TStartObserver::preServe() {
  Synchronized lock(monitor_);
  started_ = true;
  monitor_.notifyAll();
}

void TStartObserver::waitUntilStarted() {
  Synchronized lock(monitor_);
  while (!started_) {
    monitor_.waitForever();
  }
}

bool TStartObserver::started() {
  Synchronized lock(monitor_);
  return started_;
}

}  // namespace tevra::thrift
