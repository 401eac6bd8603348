#include "tools/notification_protocol.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <thrift/transport/TBufferTransports.h>

namespace tevra::tools {
namespace {

using apache::thrift::protocol::TMessageType;
using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;

constexpr int32_t kStringLimit = 100;
constexpr int32_t kContainerLimit = 10;

/** A protocol that reads `bytes`. */
NotificationProtocol reading(const std::string& bytes) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  buffer->write(reinterpret_cast<const uint8_t*>(bytes.data()),
                static_cast<uint32_t>(bytes.size()));
  return {buffer, kStringLimit, kContainerLimit};
}

/** The kind of the exception that `read` ends with; UNKNOWN when there is none. */
template <class Read>
TProtocolException::TProtocolExceptionType refusal(const std::string& bytes, Read read) {
  try {
    NotificationProtocol protocol = reading(bytes);
    read(protocol);
  } catch (const TProtocolException& exception) {
    return exception.getType();
  }
  return TProtocolException::UNKNOWN;
}

void readMessage(NotificationProtocol& protocol) {
  std::string name;
  TMessageType type{};
  int32_t sequenceId = 0;
  protocol.readMessageBegin(name, type, sequenceId);
  EXPECT_EQ(name, "ab");
  EXPECT_EQ(type, apache::thrift::protocol::T_ONEWAY);
  EXPECT_EQ(sequenceId, 7);
}

void readField(NotificationProtocol& protocol) {
  std::string name;
  TType type{};
  int16_t id = 0;
  protocol.readFieldBegin(name, type, id);
}

void readMap(NotificationProtocol& protocol) {
  TType key{};
  TType value{};
  uint32_t size = 0;
  protocol.readMapBegin(key, value, size);
}

void readList(NotificationProtocol& protocol) {
  TType type{};
  uint32_t size = 0;
  protocol.readListBegin(type, size);
}

void readSet(NotificationProtocol& protocol) {
  TType type{};
  uint32_t size = 0;
  protocol.readSetBegin(type, size);
}

std::string bytes(const char* begin, size_t size) {
  return {begin, size};
}

const std::string kNameAndSequence = bytes("\0\0\0\2ab\0\0\0\7", 10);

TEST(NotificationProtocol, ReadsWhatTheDaemonWrites) {
  EXPECT_EQ(TProtocolException::UNKNOWN,
            refusal(bytes("\x80\x01\0\x04", 4) + kNameAndSequence, readMessage));
  EXPECT_EQ(TProtocolException::UNKNOWN, refusal(bytes("\x0C\0\1", 3), readField));
  EXPECT_EQ(TProtocolException::UNKNOWN, refusal(bytes("\x11\x11\0\0\0\1", 6), readMap));
  EXPECT_EQ(TProtocolException::UNKNOWN, refusal(bytes("\x0B\0\0\0\x0A", 5), readList));
  EXPECT_EQ(TProtocolException::UNKNOWN, refusal(bytes("\x0B\0\0\0\0", 5), readSet));
}

TEST(NotificationProtocol, RefusesTypesThatThereAreNot) {
  for (const char type : {'\x12', '\x44', '\x80', '\xFF'}) {
    const std::string one(1, type);
    EXPECT_EQ(TProtocolException::INVALID_DATA, refusal(one + bytes("\0\1", 2), readField));
    EXPECT_EQ(TProtocolException::INVALID_DATA, refusal(one + bytes("\x0B\0\0\0\1", 5), readMap));
    EXPECT_EQ(TProtocolException::INVALID_DATA,
              refusal("\x0B" + one + bytes("\0\0\0\1", 4), readMap));
    EXPECT_EQ(TProtocolException::INVALID_DATA, refusal(one + bytes("\0\0\0\1", 4), readList));
    EXPECT_EQ(TProtocolException::INVALID_DATA, refusal(one + bytes("\0\0\0\1", 4), readSet));
  }
}

TEST(NotificationProtocol, RefusesMessagesOfNoVersionOrKind) {
  EXPECT_EQ(TProtocolException::BAD_VERSION, refusal(kNameAndSequence, readMessage));
  EXPECT_EQ(TProtocolException::BAD_VERSION,
            refusal(bytes("\x80\x02\0\x04", 4) + kNameAndSequence, readMessage));
  EXPECT_EQ(TProtocolException::INVALID_DATA,
            refusal(bytes("\x80\x01\0\x05", 4) + kNameAndSequence, readMessage));
  EXPECT_EQ(TProtocolException::INVALID_DATA,
            refusal(bytes("\x80\x01\0\xFF", 4) + kNameAndSequence, readMessage));
}

TEST(NotificationProtocol, RefusesMoreThanItsLimits) {
  EXPECT_EQ(TProtocolException::SIZE_LIMIT, refusal(bytes("\x0B\0\0\0\x0B", 5), readList));
  EXPECT_EQ(TProtocolException::SIZE_LIMIT,
            refusal(bytes("\0\0\0\x65", 4) + std::string(101, 'x'), [](auto& protocol) {
              std::string text;
              protocol.readString(text);
            }));
}

TEST(NotificationProtocol, EndsWithWhatIsCutShort) {
  for (const auto& read : {readField, readMap, readList, readSet}) {
    NotificationProtocol protocol = reading("");
    EXPECT_THROW(read(protocol), apache::thrift::transport::TTransportException);
  }
}

}  // namespace
}  // namespace tevra::tools
