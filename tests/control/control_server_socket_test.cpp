#include "control/control_server_socket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thrift/TProcessor.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/server/TSimpleServer.h>
#include <thrift/transport/TSocket.h>
#include <thrift/transport/TTransportException.h>

#include <memory>
#include <new>
#include <string>
#include <utility>

#include "control/serve_for_ever.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/raw_socket.h"

namespace tevra::test {
namespace {

using apache::thrift::TProcessor;
using apache::thrift::protocol::TBinaryProtocolFactory;
using apache::thrift::server::TSimpleServer;
using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TTransportException;
using fake::LogLine;
using testing::ElementsAre;

/** The first `length` bytes that the next client of `server` has sent. */
std::string nextClientsBytes(ControlServerSocket& server, uint32_t length) {
  std::string bytes(length, '\0');
  server.accept()->readAll(reinterpret_cast<uint8_t*>(bytes.data()), length);
  return bytes;
}

TEST(ControlServerSocket, ClientsThatWaitOutlastClosingAndListeningAgain) {
  ControlServerSocket server(0);
  server.listen();
  RawConnection first(server.getPort());
  first.send("first");
  server.close();
  RawConnection second(server.getPort());  // joins the queue meanwhile
  second.send("second");
  server.listen();
  EXPECT_EQ("first", nextClientsBytes(server, 5));
  EXPECT_EQ("second", nextClientsBytes(server, 6));
}

TEST(ControlServerSocket, PortIsFreeAfterItsEnd) {
  auto server = std::make_unique<ControlServerSocket>(0);
  server->listen();
  const int port = server->getPort();
  server.reset();
  EXPECT_FALSE(isListening(port));
}

TEST(ControlServerSocket, TakenPortIsAnExceptionUntilItIsFree) {
  auto other = std::make_unique<ControlServerSocket>(0);
  other->listen();
  ControlServerSocket server(other->getPort());
  EXPECT_THROW(server.listen(), TTransportException);
  EXPECT_THROW(server.listen(), TTransportException);
  other.reset();
  server.listen();
  RawConnection client(server.getPort());
  client.send("here");
  EXPECT_EQ("here", nextClientsBytes(server, 4));
}

/** What a test raises to leave the endless serving. */
struct Leave {};

/** Has no memory for the first connection and leaves with the second. */
class ScarceTransportFactory : public apache::thrift::transport::TTransportFactory {
 public:
  std::shared_ptr<TTransport> getTransport(std::shared_ptr<TTransport> /*transport*/) override {
    if (++connections_ == 1) {
      throw std::bad_alloc();
    }
    throw Leave();
  }

 private:
  int connections_ = 0;
};

using ControlServerOnItsSocket = fake::PlatformTest;

TEST_F(ControlServerOnItsSocket, LackOfMemoryForAConnectionCostsThatConnectionAlone) {
  const auto socket = std::make_shared<ControlServerSocket>(0);
  const auto server = std::make_shared<TSimpleServer>(std::shared_ptr<TProcessor>(), socket,
                                                      std::make_shared<ScarceTransportFactory>(),
                                                      std::make_shared<TBinaryProtocolFactory>());
  const auto observer = std::make_shared<thrift::TStartObserver>();
  server->setServerEventHandler(observer);
  socket->listen();
  RawConnection unlucky(socket->getPort());
  const RawConnection waiting(socket->getPort());
  EXPECT_THROW(serveForEver(*server, *observer), Leave);
  EXPECT_TRUE(unlucky.closedByPeer());
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{3, "",
                                                    "Control server failed, starting it "
                                                    "again. EXCEPTION: std::bad_alloc"}));
}

}  // namespace
}  // namespace tevra::test
