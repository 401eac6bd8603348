#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "in_module_types.h"

namespace apache::thrift::server {
class TServer;
}

namespace tevra::fake {

/** One notification: the method's name, and the record it carried in the member of its kind. */
struct Notification {
  std::string method;  ///< "notifyPAT", "requestConfiguration" and so on
  int32_t value = 0;   ///< of notifyNIM
  thrift::dvb_tables::PAT pat;
  thrift::dvb_tables::SDT sdt;
  thrift::dvb_tables::PMT pmt;
  thrift::dvb_tables::NIT nit;
  thrift::dvb_tables::TOT tot;
  thrift::dvb_tables::BAT bat;
  thrift::dvb_tables::CAT cat;
  thrift::dvb_tables::EIT eit;
};

/** MainTask on a thread of its own, from construction to destruction. Needs its fixed port. */
class FakeMainTask {
 public:
  /** Listens on 127.0.0.1:9256 + mptsIndex when the constructor returns. */
  explicit FakeMainTask(int32_t mptsIndex = 0);
  ~FakeMainTask();
  FakeMainTask(const FakeMainTask&) = delete;
  FakeMainTask& operator=(const FakeMainTask&) = delete;

  /** What has arrived so far. Notifications are oneway: use waitFor to be sure that one has. */
  [[nodiscard]] std::vector<Notification> received();

  /** The methods of received(), in order. */
  [[nodiscard]] std::vector<std::string> methods();

  /** Waits until at least `count` notifications have arrived; false after 5 s. */
  [[nodiscard]] bool waitFor(size_t count);

  /** Waits like waitFor, then gives what has arrived and forgets it: for runs so long that it would
   * not all be kept. */
  [[nodiscard]] std::vector<Notification> take(size_t count);

 private:
  class Handler;

  void record(Notification notification);

  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<Notification> received_;
  std::shared_ptr<apache::thrift::server::TServer> server_;
  std::thread thread_;
};

}  // namespace tevra::fake
