#include "tests/fakes/fake_main_task.h"

#include <utility>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/server/TSimpleServer.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>

#include "im_SINotifySrv.h"

namespace tevra::fake {
namespace {

using namespace thrift::dvb_tables;  // NOLINT(google-build-using-namespace): ten records of one
                                     // namespace

constexpr int kFirstNotificationPort = 9256;
constexpr auto kPatience = std::chrono::seconds(5);

/** Lets the constructor wait until the server listens. */
class Listening : public apache::thrift::server::TServerEventHandler {
 public:
  void preServe() override {
    std::lock_guard lock(mutex_);
    listening_ = true;
    changed_.notify_all();
  }

  void wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return listening_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool listening_ = false;
};

}  // namespace

class FakeMainTask::Handler : public thrift::in_module::im_SINotifySrvIf {
 public:
  explicit Handler(FakeMainTask& owner) : owner_(owner) {}

  void notifyNIM(const int32_t value) override { owner_.record(named("notifyNIM", value)); }
  void notifyPAT(const PAT& pat) override { take("notifyPAT", &Notification::pat, pat); }
  void notifySDT(const SDT& sdt) override { take("notifySDT", &Notification::sdt, sdt); }
  void notifyPMT(const PMT& pmt) override { take("notifyPMT", &Notification::pmt, pmt); }
  void notifyNIT(const NIT& nit) override { take("notifyNIT", &Notification::nit, nit); }
  void notifyTOT(const TOT& tot) override { take("notifyTOT", &Notification::tot, tot); }
  void notifyBAT(const BAT& bat) override { take("notifyBAT", &Notification::bat, bat); }
  void notifyCAT(const CAT& cat) override { take("notifyCAT", &Notification::cat, cat); }
  void notifyEITPresentFollowing(const EIT& eit) override {
    take("notifyEITPresentFollowing", &Notification::eit, eit);
  }
  void notifyEITSchedule(const EIT& eit) override {
    take("notifyEITSchedule", &Notification::eit, eit);
  }
  void requestConfiguration() override { owner_.record(named("requestConfiguration", 0)); }

 private:
  static Notification named(const char* method, int32_t value) {
    Notification notification;
    notification.method = method;
    notification.value = value;
    return notification;
  }

  template <class Table>
  void take(const char* method, Table Notification::*member, const Table& table) {
    Notification notification = named(method, 0);
    notification.*member = table;
    owner_.record(std::move(notification));
  }

  FakeMainTask& owner_;
};

FakeMainTask::FakeMainTask(int32_t mptsIndex) {
  using apache::thrift::protocol::TBinaryProtocolFactory;
  using apache::thrift::server::TSimpleServer;
  using apache::thrift::transport::TFramedTransportFactory;
  using apache::thrift::transport::TServerSocket;
  server_ = std::make_shared<TSimpleServer>(
      std::make_shared<thrift::in_module::im_SINotifySrvProcessor>(
          std::make_shared<Handler>(*this)),
      std::make_shared<TServerSocket>("127.0.0.1", kFirstNotificationPort + mptsIndex),
      std::make_shared<TFramedTransportFactory>(), std::make_shared<TBinaryProtocolFactory>());
  const auto listening = std::make_shared<Listening>();
  server_->setServerEventHandler(listening);
  thread_ = std::thread([server = server_] { server->serve(); });
  listening->wait();
}

FakeMainTask::~FakeMainTask() {
  server_->stop();
  thread_.join();
}

std::vector<Notification> FakeMainTask::received() {
  std::lock_guard lock(mutex_);
  return received_;
}

std::vector<std::string> FakeMainTask::methods() {
  std::vector<std::string> names;
  for (const Notification& notification : received()) {
    names.push_back(notification.method);
  }
  return names;
}

bool FakeMainTask::waitFor(size_t count) {
  std::unique_lock lock(mutex_);
  return arrived_.wait_for(lock, kPatience, [&] { return received_.size() >= count; });
}

std::vector<Notification> FakeMainTask::take(size_t count) {
  (void)waitFor(count);  // too few say so themselves
  std::lock_guard lock(mutex_);
  return std::exchange(received_, {});
}

void FakeMainTask::record(Notification notification) {
  std::lock_guard lock(mutex_);
  received_.push_back(std::move(notification));
  arrived_.notify_all();
}

}  // namespace tevra::fake
