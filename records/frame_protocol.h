#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

namespace tevra {

/**
 * Elements that the containers of one message may hold together. The schedule of a full multiplex
 * is a third of it. An empty record takes one byte of a frame but about a hundred of memory.
 */
inline constexpr uint32_t kMaxElementsPerMessage = 1024 * 1024;

/** What a message claims beyond what it may: raised along with the exception that refuses it. */
struct Refusal {
  const char* unit;  ///< of claim and limit, such as "elements of a message"
  int64_t claim;     ///< as the message says, so it may be negative
  int64_t limit;     ///< the most that would have been taken
};

/** An exception of Thrift's that refuses a message, and what the message claims. */
template <class ThriftException>
class Refused : public ThriftException, public Refusal {
 public:
  /** Like `raised`, for the reason `refusal`. */
  Refused(const ThriftException& raised, const Refusal& refusal)
      : ThriftException(raised), Refusal(refusal) {}
};

/**
 * The binary protocol of calls and notifications, for whatever may connect: non-strict read, strict
 * write, as ever. What no peer's library would write raises TProtocolException before anything is
 * allocated for it. Refused are a string or container that claims more than the rest of its frame
 * could hold, elements beyond kMaxElementsPerMessage (SIZE_LIMIT) and negative sizes
 * (NEGATIVE_SIZE). Types that the protocol does not know, which the library would put into
 * enumerations all the same, are INVALID_DATA.
 *
 * Over framed transport only. Naming the same protocol class to processor and factory keeps
 * Thrift's fast path.
 */
class FrameProtocol
    : public apache::thrift::protocol::TBinaryProtocolT<apache::thrift::transport::TBufferBase> {
 public:
  /** `transport` holds one frame at a time: what it has buffered is the rest of the frame. */
  explicit FrameProtocol(std::shared_ptr<apache::thrift::transport::TBufferBase> transport);

  using MessageType = apache::thrift::protocol::TMessageType;  ///< call, reply, exception, oneway
  using Type = apache::thrift::protocol::TType;                ///< of a value on the wire

  /** Begins a message: strict or not, with kMaxElementsPerMessage anew. Returns the bytes read. */
  uint32_t readMessageBegin(std::string& name, MessageType& type, int32_t& sequenceId);

  ///@{
  /**
   * What generated code calls when it knows this class. Checked as the class says, before anything
   * is allocated. Each returns the bytes read.
   */
  uint32_t readString(std::string& text);
  uint32_t readBinary(std::string& bytes);
  // The next two are here to be inlined: a schedule has more fields than anything else. Emptying a
  // name, which there is none of on the wire, takes longer than reading a field.
  uint32_t readStructBegin(std::string& /*name*/) { return 0; }
  uint32_t readFieldBegin(std::string& /*name*/, Type& type, int16_t& id) {
    const uint32_t consumed = readType(type);
    id = 0;
    return type == apache::thrift::protocol::T_STOP ? consumed : consumed + readI16(id);
  }
  uint32_t readMapBegin(Type& keyType, Type& valueType, uint32_t& size);
  uint32_t readListBegin(Type& elementType, uint32_t& size);
  uint32_t readSetBegin(Type& elementType, uint32_t& size);
  uint32_t skip(Type type);
  ///@}

  ///@{
  /** The same for callers that know only TProtocol. */
  uint32_t readMessageBegin_virt(std::string& name, MessageType& type,
                                 int32_t& sequenceId) override {
    return readMessageBegin(name, type, sequenceId);
  }
  uint32_t readString_virt(std::string& text) override { return readString(text); }
  uint32_t readBinary_virt(std::string& bytes) override { return readBinary(bytes); }
  uint32_t readFieldBegin_virt(std::string& name, Type& type, int16_t& id) override {
    return readFieldBegin(name, type, id);
  }
  uint32_t readMapBegin_virt(Type& keyType, Type& valueType, uint32_t& size) override {
    return readMapBegin(keyType, valueType, size);
  }
  uint32_t readListBegin_virt(Type& elementType, uint32_t& size) override {
    return readListBegin(elementType, size);
  }
  uint32_t readSetBegin_virt(Type& elementType, uint32_t& size) override {
    return readSetBegin(elementType, size);
  }
  uint32_t skip_virt(Type type) override { return skip(type); }
  ///@}

 private:
  static constexpr int8_t kLastType = 16;  // a UUID; before Thrift 0.21 a text

  uint32_t readType(Type& type) {
    int8_t number = 0;
    const uint32_t consumed = readByte(number);
    if (number < 0 || number > kLastType) {
      refuseType();
    }
    type = static_cast<Type>(number);
    return consumed;
  }
  static MessageType messageType(int32_t number);
  [[noreturn]] static void refuseType();
  uint32_t readSize(uint32_t& size, uint32_t smallestElement);
  [[nodiscard]] uint32_t bytesLeft() {
    uint32_t size = 0;
    (void)trans_->borrow(nullptr, &size);  // sets the size only; asking for none always succeeds
    return size;
  }
  void checkFits(const char* unit, int32_t claim, uint32_t smallest) {
    if (claim < 0 || static_cast<uint64_t>(claim) * smallest > bytesLeft()) {
      refuse({unit, claim, bytesLeft() / smallest});
    }
  }
  [[noreturn]] static void refuse(const Refusal& refusal);
  uint32_t readText(std::string& text, int32_t size);

  uint32_t elementsLeft_ = kMaxElementsPerMessage;
};

/** Makes a FrameProtocol for every connection; its transport must be framed. */
class FrameProtocolFactory : public apache::thrift::protocol::TProtocolFactory {
 public:
  /** Raises TProtocolException (NOT_IMPLEMENTED) for a transport that is not buffered. */
  std::shared_ptr<apache::thrift::protocol::TProtocol> getProtocol(
      std::shared_ptr<apache::thrift::transport::TTransport> transport) override;
};

}  // namespace tevra
