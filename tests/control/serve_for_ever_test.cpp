#include "control/serve_for_ever.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thrift/TApplicationException.h>
#include <thrift/TProcessor.h>
#include <thrift/transport/TTransportException.h>

#include <chrono>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/fake_platform.h"

namespace tevra::test {
namespace {

using apache::thrift::transport::TTransportException;
using fake::LogLine;
using fake::logLines;
using testing::ElementsAre;
using testing::IsEmpty;
using thrift::TStartObserver;

/** What a test raises to leave the endless serving; no exception of Thrift's. */
struct Leave {};

/** A server whose every serve() does the next thing on a list and then leaves. */
class FakeServer : public apache::thrift::server::TServer {
 public:
  FakeServer() : TServer(std::shared_ptr<apache::thrift::TProcessor>()) {}

  void serve() override {
    times.push_back(std::chrono::steady_clock::now());
    if (times.size() > turns.size()) {
      throw Leave();
    }
    turns[times.size() - 1]();
  }

  std::vector<std::function<void()>> turns;
  std::vector<std::chrono::steady_clock::time_point> times;
};

class ServeForEver : public fake::PlatformTest {
 protected:
  ServeForEver() { server_->setServerEventHandler(observer_); }

  void run() { serveForEver(*server_, *observer_); }

  std::shared_ptr<FakeServer> server_ = std::make_shared<FakeServer>();
  std::shared_ptr<TStartObserver> observer_ = std::make_shared<TStartObserver>();
};

TEST_F(ServeForEver, ServesAgainASecondAfterServingEnded) {
  server_->turns = {[&] { observer_->preServe(); }};
  EXPECT_THROW(run(), Leave);
  ASSERT_EQ(2U, server_->times.size());
  EXPECT_GE(server_->times[1] - server_->times[0], std::chrono::milliseconds(990));
  EXPECT_THAT(logLines(),
              ElementsAre(LogLine{3, "", "Control server stopped accepting, starting it again"}));
}

TEST_F(ServeForEver, ServesAgainAfterAnExceptionOfAServerThatHadStarted) {
  observer_->preServe();
  server_->turns = {[] { throw TTransportException("no descriptors"); },
                    [] { throw std::bad_alloc(); }};
  EXPECT_THROW(run(), Leave);
  EXPECT_EQ(3U, server_->times.size());
  const std::string failed = "Control server failed, starting it again. EXCEPTION: ";
  EXPECT_THAT(logLines(), ElementsAre(LogLine{3, "", failed + "no descriptors"},
                                      LogLine{3, "", failed + "std::bad_alloc"}));
}

TEST_F(ServeForEver, KeepsServingHoweverOftenItFails) {
  observer_->preServe();
  server_->turns = {[] {}, [] { throw TTransportException("again"); }, [] {}};
  EXPECT_THROW(run(), Leave);
  EXPECT_EQ(4U, server_->times.size());
  EXPECT_EQ(3U, logLines(3).size());
}

TEST_F(ServeForEver, ExceptionsBeforeTheFirstStartPass) {
  server_->turns = {[] { throw TTransportException("port in use"); },
                    [] { throw std::bad_alloc(); }};
  EXPECT_THROW(run(), TTransportException);
  EXPECT_THROW(run(), std::bad_alloc);
  EXPECT_EQ(2U, server_->times.size());
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST(StartObserver, HasNotStartedBeforePreServe) {
  TStartObserver observer;
  EXPECT_FALSE(observer.started());
  observer.preServe();
  EXPECT_TRUE(observer.started());
  observer.waitUntilStarted();
}

TEST(StartObserver, LetsAWaitingThreadGoAtPreServe) {
  TStartObserver observer;
  bool waited = false;
  std::thread waiter([&] {
    observer.waitUntilStarted();
    waited = observer.started();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  observer.preServe();
  waiter.join();
  EXPECT_TRUE(waited);
}

TEST(StartObserver, LetsAllWaitingThreadsGo) {
  TStartObserver observer;
  std::vector<std::thread> waiters;
  for (int i = 0; i < 4; ++i) {
    waiters.emplace_back([&] { observer.waitUntilStarted(); });
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  observer.preServe();
  for (std::thread& waiter : waiters) {
    waiter.join();
  }
  EXPECT_TRUE(observer.started());
}

}  // namespace
}  // namespace tevra::test
