#include "records/frame_protocol.h"

#include <utility>

namespace tevra {
namespace {

using apache::thrift::protocol::TMessageType;
using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;
using apache::thrift::transport::TBufferBase;
using apache::thrift::transport::TTransport;

constexpr int32_t kMessageTypeMask = 0xFF;
constexpr auto kUuid = static_cast<TType>(16);  // named T_UUID since Thrift 0.21

/** The least that a value of `type` takes on the wire. */
uint32_t smallestSize(TType type) {
  switch (type) {
    case apache::thrift::protocol::T_I16:
      return 2;
    case apache::thrift::protocol::T_I32:
    case apache::thrift::protocol::T_STRING:
      return 4;
    case apache::thrift::protocol::T_LIST:
    case apache::thrift::protocol::T_SET:
      return 5;
    case apache::thrift::protocol::T_MAP:
      return 6;
    case apache::thrift::protocol::T_I64:
    case apache::thrift::protocol::T_DOUBLE:
      return 8;
    case kUuid:
      return 16;
    default:
      return 1;
  }
}

}  // namespace

TMessageType FrameProtocol::messageType(int32_t number) {
  if (number < 0 || number > apache::thrift::protocol::T_ONEWAY) {
    refuseType();
  }
  return static_cast<TMessageType>(number);
}

FrameProtocol::FrameProtocol(std::shared_ptr<TBufferBase> transport)
    : TBinaryProtocolT(std::move(transport)) {}

uint32_t FrameProtocol::readMessageBegin(std::string& name, TMessageType& type,
                                         int32_t& sequenceId) {
  elementsLeft_ = kMaxElementsPerMessage;
  int32_t header = 0;
  uint32_t consumed = readI32(header);
  if (header < 0) {
    if ((static_cast<uint32_t>(header) & static_cast<uint32_t>(VERSION_MASK)) !=
        static_cast<uint32_t>(VERSION_1)) {
      throw TProtocolException(TProtocolException::BAD_VERSION, "Bad version identifier");
    }
    type = messageType(header & kMessageTypeMask);
    consumed += readString(name);
  } else {
    // Peers that do not write strictly begin with the name's length and have the type after the
    // name.
    consumed += readText(name, header);
    int8_t typeByte = 0;
    consumed += readByte(typeByte);
    type = messageType(typeByte);
  }
  return consumed + readI32(sequenceId);
}

uint32_t FrameProtocol::readString(std::string& text) {
  int32_t size = 0;
  const uint32_t consumed = readI32(size);
  return consumed + readText(text, size);
}

uint32_t FrameProtocol::readText(std::string& text, int32_t size) {
  checkFits("bytes of a string", size, 1);
  const auto length = static_cast<uint32_t>(size);
  uint32_t left = length;
  const uint8_t* const bytes = trans_->borrow(nullptr, &left);
  text = std::string(reinterpret_cast<const char*>(bytes), length);  // assign() is slow in growing
  trans_->consume(length);
  return length;
}

uint32_t FrameProtocol::readBinary(std::string& bytes) {
  return readString(bytes);
}

uint32_t FrameProtocol::readMapBegin(TType& keyType, TType& valueType, uint32_t& size) {
  uint32_t consumed = readType(keyType);
  consumed += readType(valueType);
  return consumed + readSize(size, smallestSize(keyType) + smallestSize(valueType));
}

uint32_t FrameProtocol::readListBegin(TType& elementType, uint32_t& size) {
  const uint32_t consumed = readType(elementType);
  return consumed + readSize(size, smallestSize(elementType));
}

uint32_t FrameProtocol::readSetBegin(TType& elementType, uint32_t& size) {
  return readListBegin(elementType, size);
}

uint32_t FrameProtocol::skip(Type type) {
  return apache::thrift::protocol::skip(*this, type);
}

void FrameProtocol::refuseType() {
  throw TProtocolException(TProtocolException::INVALID_DATA, "unknown type");
}

/**
 * Generated code makes room for `size` elements of the type that it expects, whatever the message
 * says they are: hence the count besides the bytes.
 */
uint32_t FrameProtocol::readSize(uint32_t& size, uint32_t smallestElement) {
  int32_t number = 0;
  const uint32_t consumed = readI32(number);
  checkFits("elements of a container", number, smallestElement);
  size = static_cast<uint32_t>(number);
  if (size > elementsLeft_) {
    const int64_t before = kMaxElementsPerMessage - elementsLeft_;
    throw Refused(
        TProtocolException(TProtocolException::SIZE_LIMIT, "more elements than a message may have"),
        {"elements of a message", before + size, kMaxElementsPerMessage});
  }
  elementsLeft_ -= size;
  return consumed;
}

/** For what the rest of the frame cannot hold. */
void FrameProtocol::refuse(const Refusal& refusal) {
  if (refusal.claim < 0) {
    throw Refused(TProtocolException(TProtocolException::NEGATIVE_SIZE), refusal);
  }
  throw Refused(
      TProtocolException(TProtocolException::SIZE_LIMIT, "larger than the rest of its frame"),
      refusal);
}

std::shared_ptr<apache::thrift::protocol::TProtocol> FrameProtocolFactory::getProtocol(
    std::shared_ptr<TTransport> transport) {
  auto buffered = std::dynamic_pointer_cast<TBufferBase>(transport);
  if (buffered == nullptr) {
    throw TProtocolException(TProtocolException::NOT_IMPLEMENTED, "not a framed transport");
  }
  return std::make_shared<FrameProtocol>(buffered);
}

}  // namespace tevra
