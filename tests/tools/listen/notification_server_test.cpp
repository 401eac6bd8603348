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

#include "im_SINotifySrv.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TSocket;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

struct ContentText {
  std::string operator()(const ConfigurationRequest& /*request*/) const { return "request"; }
  std::string operator()(const NimValue& nim) const { return std::to_string(nim.value); }
  std::string operator()(const NotifiedTable& table) const {
    return std::string(namesOf(table.kind).call) + " " +
           namesOf(identityOf(table.table).kind).table + " v" +
           std::to_string(versionOf(table.table).value_or(0));
  }
};

template <class Table>
Table ofVersion(int version) {
  Table table;
  table.version = version;
  return table;
}

/** Keeps what notifications bring, as a text each. */
class Collector {
 public:
  void take(const Notification& notification) {
    EXPECT_GE(notification.time, start_);
    const std::lock_guard<std::mutex> lock(mutex_);
    texts_.push_back(std::visit(ContentText(), notification.content));
    changed_.notify_all();
  }

  /** The first `count` of them, once they are there. */
  std::vector<std::string> wait(size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, std::chrono::seconds(30), [&] { return texts_.size() >= count; });
    return texts_;
  }

 private:
  const std::chrono::system_clock::time_point start_ = std::chrono::system_clock::now();
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> texts_;
};

class NotificationServerTest : public testing::Test {
 protected:
  using Client = thrift::in_module::im_SINotifySrvClient;

  NotificationServerTest()
      : server_(
            "127.0.0.1", 0,
            [this](const Notification& notification) { collector_.take(notification); },
            [this](int port) { port_.set_value(port); }),
        thread_([this] { server_.serve(); }),
        boundPort_(port_.get_future().get()) {}

  ~NotificationServerTest() override {
    server_.stop();
    thread_.join();
  }

  /** Over a connection of its own, as the daemon makes one for every notification. */
  void notify(const std::function<void(Client& client)>& call) const {
    const auto socket = std::make_shared<TSocket>("127.0.0.1", boundPort_);
    socket->setLinger(false, 0);
    const auto transport = std::make_shared<TFramedTransport>(socket);
    Client client(std::make_shared<TBinaryProtocol>(transport));
    transport->open();
    call(client);
    transport->close();
  }
  void notify(int32_t value) const {
    notify([value](Client& client) { client.notifyNIM(value); });
  }

  Collector collector_;
  std::promise<int> port_;
  NotificationServer server_;
  std::thread thread_;
  int boundPort_;
};

TEST_F(NotificationServerTest, HandsOnEveryCallWithWhatItBringsAndWhenItCame) {
  notify([](Client& client) {
    client.notifyNIM(7);
    client.notifyPAT(ofVersion<PAT>(1));
    client.notifySDT(ofVersion<SDT>(2));
    client.notifyPMT(ofVersion<PMT>(3));
    client.notifyNIT(ofVersion<NIT>(4));
    client.notifyTOT(TOT());
    client.notifyBAT(ofVersion<BAT>(5));
    client.notifyCAT(ofVersion<CAT>(6));
    client.notifyEITPresentFollowing(ofVersion<EIT>(7));
    client.notifyEITSchedule(ofVersion<EIT>(8));
    client.requestConfiguration();
  });
  EXPECT_THAT(collector_.wait(11),
              ElementsAre("7", "PAT PAT v1", "SDT SDT v2", "PMT PMT v3", "NIT NIT v4", "TOT TOT v0",
                          "BAT BAT v5", "CAT CAT v6", "EITPresentFollowing EIT v7",
                          "EITSchedule EIT v8", "request"));
}

TEST_F(NotificationServerTest, TakesNotificationsInTheOrderInWhichTheyAreSent) {
  std::vector<std::string> expected;
  for (int32_t i = 0; i < 20; ++i) {
    notify(i);
    expected.push_back(std::to_string(i));
  }
  EXPECT_EQ(expected, collector_.wait(expected.size()));
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
  EXPECT_THAT(collector_.wait(1), ElementsAre("5"));
}

/** Why none can serve there. */
std::string refusalAt(const std::string& host, int port) {
  NotificationServer server(
      host, port, [](const Notification& /*notification*/) {}, [](int /*port*/) {});
  try {
    server.serve();
  } catch (const ToolError& error) {
    return error.what();
  }
  return "";
}

TEST_F(NotificationServerTest, SaysWhatToDoWhenThePortIsTaken) {
  EXPECT_THAT(refusalAt("127.0.0.1", boundPort_),
              AllOf(HasSubstr("cannot listen on 127.0.0.1:" + std::to_string(boundPort_)),
                    HasSubstr("end the program that does, MainTask perhaps")));
}

TEST(NotificationServer, BlamesNoOtherProgramForAnAddressThatIsNotHere) {
  EXPECT_THAT(refusalAt("192.0.2.1", 9256),
              AllOf(HasSubstr("cannot listen on 192.0.2.1:9256"), HasSubstr("with --host"),
                    Not(HasSubstr("end the program"))));
}

}  // namespace
}  // namespace tevra::tools
