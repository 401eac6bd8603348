#include "tools/listen/notification_server.h"

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

#include <gmock/gmock.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TSocket;
using testing::HasSubstr;

/** Keeps the values of notifyNIM. */
class ValueCollector : public thrift::in_module::im_SINotifySrvNull {
 public:
  void notifyNIM(int32_t value) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    values_.push_back(value);
    changed_.notify_all();
  }

  /** The first `count` values, once they are there. */
  std::vector<int32_t> wait(size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, std::chrono::seconds(30), [&] { return values_.size() >= count; });
    return values_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<int32_t> values_;
};

class NotificationServerTest : public testing::Test {
 protected:
  NotificationServerTest()
      : server_("127.0.0.1", 0, collector_, [this](int port) { port_.set_value(port); }),
        thread_([this] { server_.serve(); }),
        boundPort_(port_.get_future().get()) {}

  ~NotificationServerTest() override {
    server_.stop();
    thread_.join();
  }

  /** Over a connection of its own, as the daemon makes one for every notification. */
  void notify(int32_t value) const {
    const auto socket = std::make_shared<TSocket>("127.0.0.1", boundPort_);
    socket->setLinger(false, 0);
    const auto transport = std::make_shared<TFramedTransport>(socket);
    thrift::in_module::im_SINotifySrvClient client(std::make_shared<TBinaryProtocol>(transport));
    transport->open();
    client.notifyNIM(value);
    transport->close();
  }

  std::shared_ptr<ValueCollector> collector_ = std::make_shared<ValueCollector>();
  std::promise<int> port_;
  NotificationServer server_;
  std::thread thread_;
  int boundPort_;
};

TEST_F(NotificationServerTest, TakesNotificationsInTheOrderInWhichTheyAreSent) {
  std::vector<int32_t> expected;
  for (int32_t i = 0; i < 20; ++i) {
    notify(i);
    expected.push_back(i);
  }
  EXPECT_EQ(expected, collector_->wait(expected.size()));
}

TEST_F(NotificationServerTest, ServesOnWhenAConnectionBringsGarbage) {
  {
    TSocket socket("127.0.0.1", boundPort_);
    socket.open();
    const std::string garbage = "GET / HTTP/1.1\r\n\r\n";
    socket.write(reinterpret_cast<const uint8_t*>(garbage.data()),
                 static_cast<uint32_t>(garbage.size()));
  }
  notify(5);
  EXPECT_EQ(std::vector<int32_t>{5}, collector_->wait(1));
}

TEST_F(NotificationServerTest, SaysWhatToDoWhenThePortIsTaken) {
  NotificationServer second("127.0.0.1", boundPort_, collector_, [](int) {});
  try {
    second.serve();
    FAIL() << "two servers on one port";
  } catch (const ToolError& error) {
    EXPECT_THAT(error.what(),
                HasSubstr("cannot listen on 127.0.0.1:" + std::to_string(boundPort_)));
  }
}

}  // namespace
}  // namespace tevra::tools
