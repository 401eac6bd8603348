#include "tools/cli/daemon_connection.h"

#include <chrono>
#include <thread>

#include <gmock/gmock.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>

#include "tests/support/allocation_hook.h"
#include "tests/tools/support/fake_daemon_server.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using apache::thrift::protocol::T_I32;
using apache::thrift::protocol::T_I64;
using apache::thrift::protocol::T_LIST;
using apache::thrift::protocol::T_MAP;
using apache::thrift::protocol::T_REPLY;
using apache::thrift::protocol::T_STRUCT;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TType;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TMemoryBuffer;
using apache::thrift::transport::TServerSocket;
using test::FakeDaemonServer;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using tevra::test::AllocationHook;
using thrift::in_module::im_SIControlSrvIf;

DaemonAddress addressOf(int port, int timeoutSeconds = 10) {
  return {"127.0.0.1", port, timeoutSeconds};
}

std::string errorOf(const DaemonAddress& address) {
  try {
    withDaemon(address, [](im_SIControlSrvIf& daemon) { (void)daemon.sendCmd(1); });
  } catch (const ToolError& error) {
    return error.what();
  }
  return "no error";
}

/** Accepts one connection, reads a little, answers with `answer` and hangs up. */
class RudeServer {
 public:
  explicit RudeServer(const std::string& answer) : socket_("127.0.0.1", 0) {
    socket_.listen();
    thread_ = std::thread([this, answer] {
      const auto connection = socket_.accept();
      uint8_t byte = 0;
      (void)connection->read(&byte, 1);
      connection->write(reinterpret_cast<const uint8_t*>(answer.data()),
                        static_cast<uint32_t>(answer.size()));
      connection->close();
    });
  }
  ~RudeServer() { thread_.join(); }
  RudeServer(const RudeServer&) = delete;
  RudeServer& operator=(const RudeServer&) = delete;

  [[nodiscard]] int port() const { return socket_.getPort(); }

 private:
  TServerSocket socket_;
  std::thread thread_;
};

TEST(DaemonConnection, MakesItsCallsOverOneConnection) {
  FakeDaemonServer server;
  withDaemon(addressOf(server.port()), [](im_SIControlSrvIf& daemon) {
    daemon.setPAT(PAT());
    EXPECT_TRUE(daemon.sendCmd(0));
  });
  EXPECT_THAT(server.daemon().calls, ElementsAre("setPAT PAT 0 v0", "sendCmd 0"));
}

TEST(DaemonConnection, SaysWhatToDoWhereNobodyListens) {
  int port = 0;
  {
    FakeDaemonServer server;
    port = server.port();
  }
  EXPECT_THAT(errorOf(addressOf(port)),
              AllOf(HasSubstr("no daemon answers at 127.0.0.1:" + std::to_string(port)),
                    HasSubstr("--port")));
}

TEST(DaemonConnection, SaysWhatToDoWhenTheHostIsNotKnown) {
  EXPECT_THAT(errorOf({"no.such.host.invalid", 9224, 1}), HasSubstr("--host"));
}

TEST(DaemonConnection, SaysWhatToDoWhenNoAnswerComes) {
  FakeDaemonServer server;
  server.daemon().beforeCall = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1500)); };
  EXPECT_THAT(errorOf(addressOf(server.port(), 1)),
              AllOf(HasSubstr("did not answer within 1 s"), HasSubstr("--timeout")));
}

TEST(DaemonConnection, SaysThatADaemonThatHangsUpMayHaveEnded) {
  const RudeServer server("");
  EXPECT_THAT(errorOf(addressOf(server.port())),
              AllOf(testing::AnyOf(HasSubstr("closed the connection"), HasSubstr("broke")),
                    testing::EndsWith(": it was ended, or its log says why")));
}

TEST(DaemonConnection, SaysWhenTheAnswerIsNone) {
  const RudeServer server("HTTP/1.1 400 Bad Request\r\n\r\n");
  EXPECT_THAT(errorOf(addressOf(server.port())), HasSubstr("127.0.0.1:"));
}

TEST(DaemonConnection, SaysWhenACallIsRefused) {
  FakeDaemonServer server;
  server.daemon().beforeCall = [] { throw std::runtime_error("disk on fire"); };
  EXPECT_THAT(errorOf(addressOf(server.port())),
              AllOf(HasSubstr("refused a call"), HasSubstr("disk on fire")));
}

TEST(DaemonConnection, SendsAScheduleLargerThanTheLibrarysOwnFrameLimit) {
  FakeDaemonServer server;
  EIT eit;
  eit.serviceId = 101;
  eit.tableId = 0x50;
  eit.events.resize(100);
  for (EITEvent& event : eit.events) {
    event.descriptors.resize(1);
    event.descriptors[0].data.assign(300'000, 'x');
  }
  withDaemon(addressOf(server.port()), [&eit](im_SIControlSrvIf& daemon) {
    daemon.setEITSchedule({{101, {{0x50, eit}}}});
  });
  ASSERT_EQ(1U, server.daemon().eitMaps.size());
  EXPECT_EQ(100U, server.daemon().eitMaps[0].at(101).at(0x50).events.size());
}

TEST(DaemonConnection, PassesOnWhatTheCallerRaises) {
  FakeDaemonServer server;
  EXPECT_THROW(withDaemon(addressOf(server.port()),
                          [](im_SIControlSrvIf&) { throw std::runtime_error("mine"); }),
               std::runtime_error);
}

TEST(DaemonConnection, SaysThatAnAnswerMakesNoSense) {
  const RudeServer server(std::string("\0\0\0\x04\x80\x77\0\x02", 8));  // of no known version
  EXPECT_THAT(errorOf(addressOf(server.port())),
              AllOf(HasSubstr("makes no sense"), HasSubstr("is it another program?")));
}

/** One frame: an answer to getSrvOutputData that ends where its `count` PIDs would begin. */
std::string answerThatClaimsPids(TType type, uint32_t count) {
  const auto wire = std::make_shared<TMemoryBuffer>();
  const auto framed = std::make_shared<TFramedTransport>(wire);
  TBinaryProtocol protocol(framed);
  protocol.writeMessageBegin("getSrvOutputData", T_REPLY, 0);
  protocol.writeFieldBegin("success", T_MAP, 0);
  protocol.writeMapBegin(T_I32, T_STRUCT, 1);
  protocol.writeI32(1);
  protocol.writeFieldBegin("pidItems", T_LIST, 1);
  protocol.writeListBegin(type, count);
  framed->flush();
  return wire->getBufferAsString();
}

/** What is said of an answer to getSrvOutputData; a failure if it takes a megabyte of memory. */
std::string errorOfAnswer(const std::string& answer) {
  const RudeServer server(answer);
  const AllocationHook hook(1024 * 1024, [] { ADD_FAILURE() << "makes room for what it claims"; });
  try {
    withDaemon(addressOf(server.port()), [](im_SIControlSrvIf& daemon) {
      std::map<int32_t, thrift::common_fpga::SPTSConfiguration> outputs;
      daemon.getSrvOutputData(outputs, {});
    });
  } catch (const ToolError& error) {
    return error.what();
  }
  return "no error";
}

TEST(DaemonConnection, RefusesAnAnswerThatClaimsMoreThanItHoldsBeforeAnyRoomIsMadeForIt) {
  // Counts that wrap to little when they are multiplied by an element's size in 32 bits, and one
  // that does not. Of records the library expects no byte at all.
  for (const uint32_t count : {0x20000001U, 0x40000001U, 32U * 1024 * 1024}) {
    for (const auto type : {T_STRUCT, T_I32, T_I64}) {
      EXPECT_THAT(errorOfAnswer(answerThatClaimsPids(type, count)),
                  AllOf(HasSubstr("makes no sense (larger than the rest of its frame)"),
                        Not(HasSubstr("\n"))))
          << count << " of type " << type;
    }
  }
}

}  // namespace
}  // namespace tevra::tools
