#include "control/control_processor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thrift/TApplicationException.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TProtocolException.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TTransportException.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "control/control_transport.h"
#include "im_SIControlSrv.h"
#include "records/frame_protocol.h"
#include "records/records.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/messages.h"

namespace tevra::test {
namespace {

using apache::thrift::TApplicationException;
using apache::thrift::TException;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TProtocol;
using apache::thrift::protocol::TProtocolException;
using apache::thrift::transport::TMemoryBuffer;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TTransportException;
using fake::LogLine;
using fake::PlatformTest;
using testing::ElementsAre;
using testing::IsEmpty;
using thrift::in_module::im_SIControlSrvClient;
using thrift::in_module::im_SIControlSrvIf;

/** A processor that does what a test tells it. */
class FakeProcessor : public apache::thrift::TProcessor {
 public:
  bool process(std::shared_ptr<TProtocol> in, std::shared_ptr<TProtocol> out,
               void* connectionContext) override {
    lastIn = std::move(in);
    lastOut = std::move(out);
    lastContext = connectionContext;
    return behaviour();
  }

  std::function<bool()> behaviour;
  std::shared_ptr<TProtocol> lastIn;
  std::shared_ptr<TProtocol> lastOut;
  void* lastContext = nullptr;
};

class GuardedProcessorTest : public PlatformTest {
 protected:
  bool process() { return guarded_.process(nullptr, nullptr, nullptr); }

  std::shared_ptr<FakeProcessor> fake_ = std::make_shared<FakeProcessor>();
  GuardedProcessor guarded_{fake_};
};

TEST_F(GuardedProcessorTest, PassesArgumentsAndResultOn) {
  const auto in = std::make_shared<TBinaryProtocol>(std::make_shared<TMemoryBuffer>());
  const auto out = std::make_shared<TBinaryProtocol>(std::make_shared<TMemoryBuffer>());
  int context = 0;
  fake_->behaviour = [] { return true; };
  EXPECT_TRUE(guarded_.process(in, out, &context));
  EXPECT_EQ(in, fake_->lastIn);
  EXPECT_EQ(out, fake_->lastOut);
  EXPECT_EQ(&context, fake_->lastContext);
  fake_->behaviour = [] { return false; };
  EXPECT_FALSE(process());
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(GuardedProcessorTest, StandardExceptionIsLoggedAndEndsTheConnection) {
  fake_->behaviour = []() -> bool { throw std::runtime_error("100% odd"); };
  EXPECT_FALSE(process());
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{3, "", "Control connection closed. EXCEPTION: 100% odd"}));
}

TEST_F(GuardedProcessorTest, LackOfMemoryIsLoggedAndEndsTheConnection) {
  fake_->behaviour = []() -> bool { throw std::bad_alloc(); };
  EXPECT_FALSE(process());
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{3, "", "Control connection closed. EXCEPTION: std::bad_alloc"}));
}

TEST_F(GuardedProcessorTest, AnythingElseThrownIsLoggedAndEndsTheConnection) {
  fake_->behaviour = []() -> bool { throw 5; };
  EXPECT_FALSE(process());
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{3, "", "Control connection closed. EXCEPTION: unknown"}));
}

TEST_F(GuardedProcessorTest, ThriftsOwnExceptionsPassToTheServer) {
  fake_->behaviour = []() -> bool { throw TProtocolException(TProtocolException::BAD_VERSION); };
  EXPECT_THROW(process(), TProtocolException);
  fake_->behaviour = []() -> bool { throw TException("plain"); };
  EXPECT_THROW(process(), TException);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

/** The line of level 4 for a call whose client is not known. */
LogLine refusalLine(const std::string& claimAndLimit) {
  return {4, "", "Control call refused: " + claimAndLimit + ", client [unknown]"};
}

TEST_F(GuardedProcessorTest, RefusalIsThriftsExceptionAndOneLineOfLevelFour) {
  const auto in = std::make_shared<TBinaryProtocol>(
      ControlTransportFactory().getTransport(std::make_shared<TMemoryBuffer>()));
  fake_->behaviour = []() -> bool {
    throw Refused(TTransportException("100% too large"), {"bytes of a frame", -5, 7});
  };
  EXPECT_THROW(guarded_.process(in, in, nullptr), TTransportException);
  fake_->behaviour = []() -> bool { throw TProtocolException(TProtocolException::DEPTH_LIMIT); };
  EXPECT_THROW(guarded_.process(in, in, nullptr), TProtocolException);
  EXPECT_THAT(fake::logLines(), ElementsAre(refusalLine("bytes of a frame [-5], limit [7]"),
                                            refusalLine("levels of nesting [65], limit [64]")));
}

/** Writes down which operation was called with what; answers something recognisable. */
class RecordingHandler : public im_SIControlSrvIf {
 public:
  void getSIData(SIService& result) override {
    called("getSIData");
    result.name = "Norte";
  }
  bool SISetData(const SIService& data) override { return called("SISetData " + data.name); }
  bool sendCmd(int32_t command) override { return called("sendCmd " + std::to_string(command)); }
  void setPAT(const PAT& pat) override { called("setPAT", pat.version); }
  void setSDT(const SDT& sdt) override { called("setSDT", sdt.version); }
  void setPMT(const PMT& pmt) override { called("setPMT", pmt.version); }
  bool setNIT(const NIT& nit) override { return called("setNIT", nit.version); }
  void setTOT(const TOT& tot) override { called("setTOT", tot.version); }
  bool setBAT(const BAT& bat) override { return called("setBAT", bat.version); }
  void setCAT(const CAT& cat) override { called("setCAT", cat.version); }
  void setEITPresentFollowing(const EITMap& eits) override {
    called("setEITPresentFollowing", eits.at(1).at(0x4E).version);
  }
  void setEITSchedule(const EITMap& eits) override {
    called("setEITSchedule", eits.at(1).at(0x50).version);
  }
  void getSrvOutputData(std::map<int32_t, SPTSConfiguration>& answer,
                        const SrvOutputRequest& request) override {
    called("getSrvOutputData", request.inputSID);
    answer[9].pidItems.emplace_back().inputPid = 33;
  }

  std::vector<std::string> calls;
  std::function<void()> failure;  ///< called by every operation

 private:
  bool called(const std::string& call) {
    calls.push_back(call);
    if (failure) {
      failure();
    }
    return true;
  }
  bool called(const char* operation, int32_t value) {
    return called(operation + (" " + std::to_string(value)));
  }
};

class ControlProcessor : public PlatformTest {
 protected:
  /** Serves the request that lies on the wire. */
  bool process() {
    return processor_->process(FrameProtocolFactory().getProtocol(framedOver(request_)),
                               FrameProtocolFactory().getProtocol(framedOver(reply_)), nullptr);
  }

  /** Serves these bytes, as one frame. */
  bool process(const std::string& message) {
    const std::string frame = framed(message);
    request_->resetBuffer();
    request_->write(reinterpret_cast<const uint8_t*>(frame.data()),
                    static_cast<uint32_t>(frame.size()));
    return process();
  }

  /** The client's half of a call, to be served in between. */
  im_SIControlSrvClient client() {
    return im_SIControlSrvClient(std::make_shared<TBinaryProtocol>(framedOver(reply_)),
                                 std::make_shared<TBinaryProtocol>(framedOver(request_)));
  }

  static std::shared_ptr<TTransport> framedOver(const std::shared_ptr<TMemoryBuffer>& wire) {
    return ControlTransportFactory().getTransport(wire);
  }

  std::shared_ptr<TMemoryBuffer> request_ = std::make_shared<TMemoryBuffer>();
  std::shared_ptr<TMemoryBuffer> reply_ = std::make_shared<TMemoryBuffer>();
  std::shared_ptr<RecordingHandler> handler_ = std::make_shared<RecordingHandler>();
  std::shared_ptr<apache::thrift::TProcessor> processor_ = makeControlProcessor(handler_);
};

TEST_F(ControlProcessor, RoutesTheCallsWithoutTables) {
  im_SIControlSrvClient caller = client();
  caller.send_getSIData();
  EXPECT_TRUE(process());
  SIService data;
  caller.recv_getSIData(data);
  EXPECT_EQ("Norte", data.name);
  data.name = "Sur";
  caller.send_SISetData(data);
  EXPECT_TRUE(process());
  EXPECT_TRUE(caller.recv_SISetData());
  caller.send_sendCmd(-3);
  EXPECT_TRUE(process());
  EXPECT_TRUE(caller.recv_sendCmd());
  EXPECT_THAT(handler_->calls, ElementsAre("getSIData", "SISetData Sur", "sendCmd -3"));
}

TEST_F(ControlProcessor, RoutesTheTables) {
  im_SIControlSrvClient caller = client();
  const auto roundTrip = [&](auto table, int32_t version, auto send, auto receive) {
    table.version = version;
    (caller.*send)(table);
    EXPECT_TRUE(process());
    return (caller.*receive)();
  };
  using Client = im_SIControlSrvClient;
  roundTrip(PAT(), 1, &Client::send_setPAT, &Client::recv_setPAT);
  roundTrip(SDT(), 2, &Client::send_setSDT, &Client::recv_setSDT);
  roundTrip(PMT(), 3, &Client::send_setPMT, &Client::recv_setPMT);
  EXPECT_TRUE(roundTrip(NIT(), 4, &Client::send_setNIT, &Client::recv_setNIT));
  roundTrip(TOT(), 5, &Client::send_setTOT, &Client::recv_setTOT);
  EXPECT_TRUE(roundTrip(BAT(), 6, &Client::send_setBAT, &Client::recv_setBAT));
  roundTrip(CAT(), 7, &Client::send_setCAT, &Client::recv_setCAT);
  EXPECT_THAT(handler_->calls, ElementsAre("setPAT 1", "setSDT 2", "setPMT 3", "setNIT 4",
                                           "setTOT 5", "setBAT 6", "setCAT 7"));
}

TEST_F(ControlProcessor, RoutesEITsAndTheOutputRequest) {
  im_SIControlSrvClient caller = client();
  EITMap eits;
  eits[1][0x4E].version = 8;
  eits[1][0x50].version = 9;
  caller.send_setEITPresentFollowing(eits);
  EXPECT_TRUE(process());
  caller.recv_setEITPresentFollowing();
  caller.send_setEITSchedule(eits);
  EXPECT_TRUE(process());
  caller.recv_setEITSchedule();
  SrvOutputRequest request;
  request.inputSID = 3401;
  caller.send_getSrvOutputData(request);
  EXPECT_TRUE(process());
  std::map<int32_t, SPTSConfiguration> answer;
  caller.recv_getSrvOutputData(answer);
  EXPECT_EQ(33, answer.at(9).pidItems.at(0).inputPid);
  EXPECT_THAT(handler_->calls,
              ElementsAre("setEITPresentFollowing 8", "setEITSchedule 9", "getSrvOutputData 3401"));
}

TEST_F(ControlProcessor, UnknownMethodIsAnsweredAndTheNextCallServed) {
  EXPECT_TRUE(process(callMessage("setpat")));
  im_SIControlSrvClient caller = client();
  try {
    caller.recv_setPAT();
    FAIL() << "no exception";
  } catch (const TApplicationException& exception) {
    EXPECT_EQ(TApplicationException::UNKNOWN_METHOD, exception.getType());
  }
  caller.send_sendCmd(0);
  EXPECT_TRUE(process());
  EXPECT_TRUE(caller.recv_sendCmd());
  EXPECT_THAT(handler_->calls, ElementsAre("sendCmd 0"));
}

TEST_F(ControlProcessor, CallWithoutArgumentsGetsDefaultOnes) {
  EXPECT_TRUE(process(callMessage("sendCmd")));
  EXPECT_TRUE(client().recv_sendCmd());
  EXPECT_THAT(handler_->calls, ElementsAre("sendCmd 0"));
}

TEST_F(ControlProcessor, MessagesWithoutVersionAreRead) {
  EXPECT_TRUE(process(unversionedCallMessage("getSIData")));
  SIService data;
  client().recv_getSIData(data);
  EXPECT_EQ("Norte", data.name);
}

TEST_F(ControlProcessor, RepliesCarryTheVersion) {
  EXPECT_TRUE(process(callMessage("getSIData")));
  EXPECT_EQ(std::string("\x80\x01\x00\x02", 4), reply_->getBufferAsString().substr(4, 4));
}

TEST_F(ControlProcessor, StandardExceptionOfTheHandlerReachesTheClientAndTheLog) {
  handler_->failure = [] { throw std::runtime_error("mutex broken"); };
  im_SIControlSrvClient caller = client();
  caller.send_setPAT(PAT());
  EXPECT_TRUE(process());
  try {
    caller.recv_setPAT();
    FAIL() << "no exception";
  } catch (const TApplicationException& exception) {
    EXPECT_EQ(TApplicationException::UNKNOWN, exception.getType());
    EXPECT_STREQ("mutex broken", exception.what());
  }
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{3, "",
                                                    "Call of im_SIControlSrv.setPAT failed. "
                                                    "EXCEPTION: mutex broken"}));
}

TEST_F(ControlProcessor, ConnectionStaysUsableAfterACallThatRanOutOfMemory) {
  handler_->failure = [] { throw std::bad_alloc(); };
  im_SIControlSrvClient caller = client();
  caller.send_setEITSchedule({{1, {{0x50, EIT()}}}});
  EXPECT_TRUE(process());
  EXPECT_THROW(caller.recv_setEITSchedule(), TApplicationException);
  handler_->failure = nullptr;
  caller.send_sendCmd(7);
  EXPECT_TRUE(process());
  EXPECT_TRUE(caller.recv_sendCmd());
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{3, "",
                                  "Call of im_SIControlSrv.setEITSchedule failed. "
                                  "EXCEPTION: std::bad_alloc"}));
}

TEST_F(ControlProcessor, OtherExceptionOfTheHandlerEndsTheConnection) {
  handler_->failure = [] { throw 5; };
  im_SIControlSrvClient caller = client();
  caller.send_setPAT(PAT());
  EXPECT_FALSE(process());
  EXPECT_TRUE(fake::logged(3, "Control connection closed. EXCEPTION: unknown"));
}

TEST_F(ControlProcessor, ReplyInsteadOfACallEndsTheConnection) {
  std::string message = callMessage("getSIData");
  message[3] = 2;
  EXPECT_FALSE(process(message));
  EXPECT_THAT(handler_->calls, IsEmpty());
}

TEST_F(ControlProcessor, WrongVersionIsThriftsException) {
  std::string message = callMessage("getSIData");
  message[1] = 2;
  EXPECT_THROW(process(message), TProtocolException);
}

TEST_F(ControlProcessor, MessageCutAnywhereIsThriftsException) {
  const std::string message = hugeListMessage(1);
  for (size_t length = 1; length < message.size(); ++length) {
    EXPECT_THROW(process(message.substr(0, length)), TException) << length;
  }
  EXPECT_THAT(handler_->calls, IsEmpty());
  EXPECT_THAT(fake::logLines(3), IsEmpty());
}

TEST_F(ControlProcessor, NegativeListSizeIsRefused) {
  EXPECT_THROW(process(hugeListMessage(-1)), TProtocolException);
  EXPECT_THAT(handler_->calls, IsEmpty());
  EXPECT_THAT(fake::logLines(),
              ElementsAre(refusalLine("elements of a container [-1], limit [3]")));
}

TEST_F(ControlProcessor, ListLargerThanItsMessageIsRefused) {
  for (const int32_t size : {50000000, 0x7FFFFFFF}) {
    fake::clearLog();
    EXPECT_THROW(process(hugeListMessage(size)), TException) << size;
    EXPECT_THAT(fake::logLines(), ElementsAre(refusalLine("elements of a container [" +
                                                          std::to_string(size) + "], limit [3]")));
  }
  EXPECT_THAT(handler_->calls, IsEmpty());
}

TEST_F(ControlProcessor, ListThatGoesOnBehindItsMessageIsThriftsException) {
  EXPECT_THROW(process(hugeListMessage(2)), TException);
  EXPECT_THAT(handler_->calls, IsEmpty());
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ControlProcessor, FrameBeyondTheLimitIsRefused) {
  const std::string head = bigEndian(kMaxFrameSize + 1);
  request_->write(reinterpret_cast<const uint8_t*>(head.data()), 4);
  EXPECT_THROW(process(), TTransportException);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(refusalLine("bytes of a frame [67108865], limit [67108864]")));
}

TEST_F(ControlProcessor, NestingBeyondTheLimitIsRefused) {
  std::string message = callMessage("setPAT");
  message.pop_back();
  for (int depth = 0; depth < 100; ++depth) {
    message += std::string("\x0C\x00\x63", 3);  // field 99, a struct
  }
  EXPECT_THROW(process(message), TProtocolException);
  EXPECT_THAT(fake::logLines(), ElementsAre(refusalLine("levels of nesting [65], limit [64]")));
}

}  // namespace
}  // namespace tevra::test
