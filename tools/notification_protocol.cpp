#include "tools/notification_protocol.h"

#include <algorithm>
#include <array>

namespace tevra::tools {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TMessageType;
using apache::thrift::protocol::TProtocol;
using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;
using apache::thrift::transport::TTransport;

constexpr bool kStrictRead = true;
constexpr bool kStrictWrite = true;

}  // namespace

NotificationProtocol::NotificationProtocol(const std::shared_ptr<TTransport>& transport,
                                           int32_t stringLimit, int32_t containerLimit)
    : TVirtualProtocol(transport) {
  setStringSizeLimit(stringLimit);
  setContainerSizeLimit(containerLimit);
  setStrict(kStrictRead, kStrictWrite);
}

uint32_t NotificationProtocol::readMessageBegin(std::string& name, TMessageType& type,
                                                int32_t& sequenceId) {
  constexpr uint32_t kTypeMask = 0xFF;
  int32_t header = 0;
  uint32_t consumed = readI32(header);
  const auto bits = static_cast<uint32_t>(header);
  if ((bits & static_cast<uint32_t>(VERSION_MASK)) != static_cast<uint32_t>(VERSION_1)) {
    throw TProtocolException(TProtocolException::BAD_VERSION, "bad version identifier");
  }
  if ((bits & kTypeMask) > static_cast<uint32_t>(apache::thrift::protocol::T_ONEWAY)) {
    throw TProtocolException(TProtocolException::INVALID_DATA, "unknown type of message");
  }
  type = static_cast<TMessageType>(bits & kTypeMask);
  consumed += readString(name);
  return consumed + readI32(sequenceId);
}

uint32_t NotificationProtocol::readFieldBegin(std::string& name, TType& type, int16_t& id) {
  checkTypes(1);
  return TBinaryProtocol::readFieldBegin(name, type, id);
}

uint32_t NotificationProtocol::readMapBegin(TType& keyType, TType& valueType, uint32_t& size) {
  checkTypes(2);
  return TBinaryProtocol::readMapBegin(keyType, valueType, size);
}

uint32_t NotificationProtocol::readListBegin(TType& elementType, uint32_t& size) {
  checkTypes(1);
  return TBinaryProtocol::readListBegin(elementType, size);
}

uint32_t NotificationProtocol::readSetBegin(TType& elementType, uint32_t& size) {
  checkTypes(1);
  return TBinaryProtocol::readSetBegin(elementType, size);
}

/** Looks at the next `count` bytes. Where the frame has fewer, reading them fails by itself. */
void NotificationProtocol::checkTypes(uint32_t count) {
  std::array<uint8_t, 2> none{};
  uint32_t size = count;
  const uint8_t* types = trans_->borrow(none.data(), &size);
  if (types != nullptr && std::any_of(types, types + count, [](uint8_t type) {
        return type > apache::thrift::protocol::T_UTF16;
      })) {
    throw TProtocolException(TProtocolException::INVALID_DATA, "unknown type");
  }
}

std::shared_ptr<TProtocol> NotificationProtocolFactory::getProtocol(
    std::shared_ptr<TTransport> transport) {
  return std::make_shared<NotificationProtocol>(transport, stringLimit_, containerLimit_);
}

}  // namespace tevra::tools
