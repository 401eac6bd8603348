#include "records/frame_protocol.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>

#include "im_SIControlSrv.h"
#include "records/records.h"

namespace tevra {
namespace {

using apache::thrift::protocol::T_CALL;
using apache::thrift::protocol::T_I32;
using apache::thrift::protocol::T_I64;
using apache::thrift::protocol::T_LIST;
using apache::thrift::protocol::T_MAP;
using apache::thrift::protocol::T_SET;
using apache::thrift::protocol::T_STRING;
using apache::thrift::protocol::T_STRUCT;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TMessageType;
using apache::thrift::protocol::TProtocol;
using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TMemoryBuffer;
using apache::thrift::transport::TTransportException;

using Write = std::function<void(TBinaryProtocol&)>;

/** A protocol whose one frame holds what `write` wrote. */
std::shared_ptr<TProtocol> reading(const Write& write) {
  auto wire = std::make_shared<TMemoryBuffer>();
  auto framed = std::make_shared<TFramedTransport>(wire);
  TBinaryProtocol protocol(framed);
  write(protocol);
  framed->flush();
  return FrameProtocolFactory().getProtocol(std::make_shared<TFramedTransport>(wire));
}

/** The same with a first i32 already read, as in a call whose frame is being decoded. */
std::shared_ptr<TProtocol> readingAfterAnInteger(const Write& write) {
  auto protocol = reading([&](TBinaryProtocol& binary) {
    binary.writeI32(7);
    write(binary);
  });
  int32_t first = 0;
  protocol->readI32(first);
  EXPECT_EQ(first, 7);
  return protocol;
}

void expectRefusal(TProtocolException::TProtocolExceptionType type,
                   const std::function<void()>& read) {
  try {
    read();
    FAIL() << "was read";
  } catch (const TProtocolException& exception) {
    EXPECT_EQ(exception.getType(), type);
  }
}

void expectSizeLimit(const std::function<void()>& read) {
  expectRefusal(TProtocolException::SIZE_LIMIT, read);
}

void expectInvalidData(const std::function<void()>& read) {
  expectRefusal(TProtocolException::INVALID_DATA, read);
}

/** The count in the head of a list, of a set or of a map. */
uint32_t listSize(TProtocol& protocol) {
  TType type{};
  uint32_t size = 0;
  protocol.readListBegin(type, size);
  return size;
}
uint32_t setSize(TProtocol& protocol) {
  TType type{};
  uint32_t size = 0;
  protocol.readSetBegin(type, size);
  return size;
}
uint32_t mapSize(TProtocol& protocol) {
  TType keyType{};
  TType valueType{};
  uint32_t size = 0;
  protocol.readMapBegin(keyType, valueType, size);
  return size;
}

/** The name of the call that a message begins. */
std::string callOf(TProtocol& protocol) {
  std::string name;
  TMessageType type{};
  int32_t sequenceId = 0;
  protocol.readMessageBegin(name, type, sequenceId);
  return name;
}

/** Types that no protocol has: beyond the last, and negative. */
constexpr int8_t kUnknownTypes[] = {17, 18, 78, 127, -1, -128};

TEST(FrameProtocol, ReadsAStringThatFillsTheRestOfItsFrame) {
  const auto protocol =
      readingAfterAnInteger([](TBinaryProtocol& wire) { wire.writeString(std::string("abc")); });
  std::string text;
  protocol->readString(text);
  EXPECT_EQ(text, "abc");
}

TEST(FrameProtocol, RefusesAStringOneByteLongerThanTheRestOfItsFrame) {
  const auto protocol = readingAfterAnInteger([](TBinaryProtocol& wire) {
    wire.writeI32(4);  // its size
    wire.writeByte('a');
    wire.writeByte('b');
    wire.writeByte('c');
  });
  std::string text;
  expectSizeLimit([&] { protocol->readString(text); });
  EXPECT_EQ(text.capacity(), std::string().capacity()) << "nothing was allocated";
}

TEST(FrameProtocol, RefusesAStringThatClaimsTwoGigabytes) {
  const auto protocol =
      readingAfterAnInteger([](TBinaryProtocol& wire) { wire.writeI32(INT32_MAX); });
  std::string text;
  expectSizeLimit([&] { protocol->readBinary(text); });
}

TEST(FrameProtocol, RefusesAStringOfNegativeSize) {
  const auto protocol = readingAfterAnInteger([](TBinaryProtocol& wire) { wire.writeI32(-1); });
  std::string text;
  EXPECT_THROW(protocol->readString(text), TProtocolException);
}

TEST(FrameProtocol, ReadsAListThatItsFrameCanHoldAndNoneWithOneElementMore) {
  const auto claiming = [](uint32_t count) {
    return readingAfterAnInteger([count](TBinaryProtocol& wire) {
      wire.writeListBegin(T_I32, count);
      wire.writeI32(1);
      wire.writeI32(2);
    });
  };
  EXPECT_EQ(listSize(*claiming(2)), 2U);
  expectSizeLimit([&] { listSize(*claiming(3)); });
}

TEST(FrameProtocol, RefusesContainersThatClaimFiveMillionElements) {
  constexpr uint32_t kMany = 5'000'000;
  const auto list =
      readingAfterAnInteger([](TBinaryProtocol& wire) { wire.writeListBegin(T_STRUCT, kMany); });
  expectSizeLimit([&] { listSize(*list); });
  const auto set =
      readingAfterAnInteger([](TBinaryProtocol& wire) { wire.writeSetBegin(T_LIST, kMany); });
  expectSizeLimit([&] { setSize(*set); });
  const auto map = readingAfterAnInteger(
      [](TBinaryProtocol& wire) { wire.writeMapBegin(T_STRING, T_MAP, kMany); });
  expectSizeLimit([&] { mapSize(*map); });
}

/** What is said of the head of a container of `count` elements, with 64 bytes of them behind it. */
std::string refusalOf(std::initializer_list<TType> types, uint32_t count,
                      const std::function<void(TProtocol&)>& read) {
  const auto protocol = reading([&](TBinaryProtocol& wire) {
    for (const TType type : types) {
      wire.writeByte(static_cast<int8_t>(type));
    }
    wire.writeI32(static_cast<int32_t>(count));
    for (int written = 0; written < 8; ++written) {
      wire.writeI64(0);
    }
  });
  try {
    read(*protocol);
  } catch (const TProtocolException& exception) {
    return exception.what();
  }
  return "read";
}

TEST(FrameProtocol, RefusesCountsWhoseBytesWrapToLittleIn32Bits) {
  const std::string tooLarge = "larger than the rest of its frame";
  for (const auto& [element, count] : std::vector<std::pair<TType, uint32_t>>{
           {T_I64, 0x20000001}, {T_I32, 0x40000001}, {T_LIST, 0x33333334}, {T_MAP, 0x2AAAAAAB}}) {
    EXPECT_EQ(tooLarge, refusalOf({element}, count, listSize)) << element;
    EXPECT_EQ(tooLarge, refusalOf({element}, count, setSize)) << element;
    EXPECT_EQ(tooLarge, refusalOf({element, element}, count / 2 + 1, mapSize)) << element;
  }
}

TEST(FrameProtocol, MakesNoRoomForAListOfRecordsThatItsFrameCannotHold) {
  for (const uint32_t count : {0x20000001U, 32U * 1024 * 1024}) {
    const auto protocol = reading([count](TBinaryProtocol& wire) {
      wire.writeFieldBegin("events", T_LIST, 9);
      wire.writeListBegin(T_STRUCT, count);
    });
    EIT eit;
    expectSizeLimit([&] { eit.read(protocol.get()); });
    EXPECT_EQ(eit.events.capacity(), 0U);
  }
}

TEST(FrameProtocol, CountsSixteenBytesForAUuid) {
  const auto ids = [](size_t bytes) {
    return reading([bytes](TBinaryProtocol& wire) {
      wire.writeByte(16);  // T_UUID of newer libraries
      wire.writeI32(2);
      for (size_t written = 0; written < bytes; ++written) {
        wire.writeByte(0);
      }
    });
  };
  EXPECT_EQ(listSize(*ids(32)), 2U);
  expectSizeLimit([&] { listSize(*ids(31)); });
}

TEST(FrameProtocol, RefusesAnOversizedContainerInAFieldThatNobodyKnows) {
  const auto protocol = readingAfterAnInteger([](TBinaryProtocol& wire) {
    wire.writeFieldBegin("", T_LIST, 99);
    wire.writeListBegin(T_STRUCT, INT32_MAX);
  });
  PAT pat;
  expectSizeLimit([&] { pat.read(protocol.get()); });
}

/** A list of empty records, one byte each: the frame could hold them, the memory need not. */
std::shared_ptr<TProtocol> readingEmptyRecords(TType claimedType, uint32_t count) {
  return reading([&](TBinaryProtocol& wire) {
    wire.writeListBegin(claimedType, count);
    for (uint32_t written = 0; written < count; ++written) {
      wire.writeFieldStop();
    }
  });
}

TEST(FrameProtocol, ReadsAsManyElementsAsACallMayHave) {
  const auto protocol = readingEmptyRecords(T_STRUCT, kMaxElementsPerMessage);
  EXPECT_EQ(listSize(*protocol), kMaxElementsPerMessage);
}

TEST(FrameProtocol, RefusesMoreElementsThanACallMayHave) {
  for (const TType claimed : {T_STRUCT, apache::thrift::protocol::T_BOOL}) {
    const auto protocol = readingEmptyRecords(claimed, kMaxElementsPerMessage + 1);
    expectSizeLimit([&] { listSize(*protocol); });
  }
}

TEST(FrameProtocol, CountsTheElementsOfAllContainersOfACall) {
  const auto protocol = reading([](TBinaryProtocol& wire) {
    wire.writeListBegin(T_STRUCT, kMaxElementsPerMessage / 2);
    wire.writeMapBegin(T_I32, T_STRUCT, kMaxElementsPerMessage / 2);
    wire.writeSetBegin(T_STRUCT, 1);
    wire.writeBinary(std::string(4 * 1024 * 1024, '\0'));
  });
  listSize(*protocol);
  mapSize(*protocol);
  expectSizeLimit([&] { setSize(*protocol); });
}

TEST(FrameProtocol, CountsTheElementsOfEveryCallAnew) {
  auto protocol = reading([](TBinaryProtocol& wire) {
    for (int call = 0; call < 3; ++call) {
      wire.writeMessageBegin("setPAT", T_CALL, call);
      wire.writeListBegin(T_STRUCT, kMaxElementsPerMessage);
      wire.writeBinary(std::string());
    }
    wire.writeBinary(std::string(2 * 1024 * 1024, '\0'));
  });
  for (int call = 0; call < 3; ++call) {
    std::string text;
    EXPECT_EQ(callOf(*protocol), "setPAT");
    EXPECT_NO_THROW(listSize(*protocol));
    protocol->readBinary(text);
  }
}

TEST(FrameProtocol, RefusesFieldsOfUnknownTypes) {
  for (const int8_t unknown : kUnknownTypes) {
    const auto protocol = reading([&](TBinaryProtocol& wire) {
      wire.writeByte(unknown);
      wire.writeI16(1);
    });
    PAT pat;
    expectInvalidData([&] { pat.read(protocol.get()); });
  }
}

TEST(FrameProtocol, RefusesContainersOfUnknownTypes) {
  const auto empty = [](std::initializer_list<int8_t> types) {
    return reading([&](TBinaryProtocol& wire) {
      for (const int8_t type : types) {
        wire.writeByte(type);
      }
      wire.writeI32(0);
    });
  };
  for (const int8_t unknown : kUnknownTypes) {
    expectInvalidData([&] { listSize(*empty({unknown})); });
    expectInvalidData([&] { setSize(*empty({unknown})); });
    expectInvalidData([&] { mapSize(*empty({unknown, T_I32})); });
    expectInvalidData([&] { mapSize(*empty({T_I32, unknown})); });
  }
}

TEST(FrameProtocol, ReadsTheTypesOfAMapInTheirOrder) {
  const auto protocol = reading([](TBinaryProtocol& wire) {
    wire.writeMapBegin(T_I32, T_STRING, 1);
    wire.writeI64(0);
  });
  TType keyType{};
  TType valueType{};
  uint32_t size = 0;
  EXPECT_EQ(protocol->readMapBegin(keyType, valueType, size), 6U);
  EXPECT_EQ(keyType, T_I32);
  EXPECT_EQ(valueType, T_STRING);
  EXPECT_EQ(size, 1U);
}

TEST(FrameProtocol, RefusesMessagesOfUnknownTypes) {
  for (const uint8_t unknown : std::initializer_list<uint8_t>{5, 78, 255}) {
    const auto strict = reading([&](TBinaryProtocol& wire) {
      wire.writeI32(
          static_cast<int32_t>(static_cast<uint32_t>(TBinaryProtocol::VERSION_1) | unknown));
      wire.writeString(std::string("setPAT"));
    });
    expectInvalidData([&] { callOf(*strict); });
    const auto old = reading([&](TBinaryProtocol& wire) {
      wire.writeString(std::string("setPAT"));
      wire.writeByte(static_cast<int8_t>(unknown));
    });
    expectInvalidData([&] { callOf(*old); });
  }
}

TEST(FrameProtocol, RefusesContainersOfNegativeSize) {
  const auto protocol = reading([](TBinaryProtocol& wire) {
    wire.writeByte(T_STRUCT);
    wire.writeI32(-1);
  });
  expectRefusal(TProtocolException::NEGATIVE_SIZE, [&] { listSize(*protocol); });
}

TEST(FrameProtocol, RefusesAMessageWhoseNameIsLongerThanItsFrame) {
  const auto protocol = reading([](TBinaryProtocol& wire) {
    wire.writeI32(static_cast<int32_t>(TBinaryProtocol::VERSION_1 | T_CALL));
    wire.writeI32(INT32_MAX);
  });
  expectSizeLimit([&] { callOf(*protocol); });
}

TEST(FrameProtocol, RefusesAnUnknownVersion) {
  const auto protocol =
      reading([](TBinaryProtocol& wire) { wire.writeI32(static_cast<int32_t>(0x80770001U)); });
  EXPECT_THROW(callOf(*protocol), TProtocolException);
}

TEST(FrameProtocol, ReadsMessagesOfStrictAndOfOldClients) {
  for (const bool strict : {true, false}) {
    const auto protocol = reading([&](TBinaryProtocol& wire) {
      wire.setStrict(false, strict);
      wire.writeMessageBegin("sendCmd", T_CALL, 42);
    });
    std::string name;
    TMessageType type{};
    int32_t sequenceId = 0;
    protocol->readMessageBegin(name, type, sequenceId);
    EXPECT_EQ(name, "sendCmd");
    EXPECT_EQ(type, T_CALL);
    EXPECT_EQ(sequenceId, 42);
  }
}

TEST(FrameProtocol, RefusesAnOldMessageWhoseNameIsLongerThanItsFrame) {
  const auto protocol = reading([](TBinaryProtocol& wire) { wire.writeI32(0x7FFFFFF0); });
  expectSizeLimit([&] { callOf(*protocol); });
}

/** What the exception tells that `read` raises. */
std::string claimIn(const std::function<void()>& read) {
  try {
    read();
  } catch (const Refusal& refusal) {
    return std::string(refusal.unit) + " " + std::to_string(refusal.claim) + " of " +
           std::to_string(refusal.limit);
  }
  return "nothing";
}

TEST(FrameProtocol, TellsTheClaimAndTheLimitOfAStringThatItRefuses) {
  for (const int32_t claim : {4, INT32_MAX, -1}) {
    const auto text = reading([claim](TBinaryProtocol& wire) {
      wire.writeI32(claim);
      wire.writeByte('a');
      wire.writeI16(0);
    });
    std::string read;
    EXPECT_EQ("bytes of a string " + std::to_string(claim) + " of 3",
              claimIn([&] { text->readString(read); }));
  }
  const auto name = reading([](TBinaryProtocol& wire) { wire.writeI32(INT32_MAX); });
  EXPECT_EQ("bytes of a string 2147483647 of 0", claimIn([&] { callOf(*name); }));
}

TEST(FrameProtocol, TellsTheClaimAndTheLimitOfAContainerThatItRefuses) {
  for (const int32_t claim : {6, INT32_MAX, -1}) {
    const auto list = reading([claim](TBinaryProtocol& wire) {
      wire.writeListBegin(T_I32, static_cast<uint32_t>(claim));
      wire.writeI64(0);
      wire.writeI64(0);
      wire.writeI32(0);
      wire.writeI16(0);
    });
    EXPECT_EQ("elements of a container " + std::to_string(claim) + " of 5",
              claimIn([&] { listSize(*list); }));
  }
}

TEST(FrameProtocol, TellsHowManyElementsAMessageThatItRefusesHasInAll) {
  const auto protocol = reading([](TBinaryProtocol& wire) {
    wire.writeListBegin(T_STRUCT, kMaxElementsPerMessage - 1);
    wire.writeSetBegin(T_STRUCT, 3);
    wire.writeBinary(std::string(kMaxElementsPerMessage, '\0'));
  });
  listSize(*protocol);
  EXPECT_EQ("elements of a message 1048578 of 1048576", claimIn([&] { setSize(*protocol); }));
}

TEST(FrameProtocol, ReadsEveryRecordThatFitsItsFrame) {
  EIT eit;
  eit.events.resize(3);
  eit.events[1].startTime = INT64_C(0xE1F2123456);
  eit.events[2].descriptors.resize(1);
  eit.events[2].descriptors[0].data = std::string(255, '\0');
  EITMap eits;
  eits[1][0x50] = eit;
  thrift::in_module::im_SIControlSrv_setEITSchedule_args call;
  const auto protocol = reading([&](TBinaryProtocol& wire) {
    thrift::in_module::im_SIControlSrv_setEITSchedule_args arguments;
    arguments.eits = eits;
    arguments.write(&wire);
  });
  call.read(protocol.get());
  EXPECT_TRUE(call.eits == eits);
}

TEST(FrameProtocol, IsMadeOverAFramedTransportOnly) {
  EXPECT_THROW((void)FrameProtocolFactory().getProtocol(
                   std::make_shared<apache::thrift::transport::TSocket>("127.0.0.1", 1)),
               TProtocolException);
}

}  // namespace
}  // namespace tevra
