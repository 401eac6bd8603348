#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TVirtualProtocol.h>

namespace tevra::tools {

/**
 * Thrift's binary protocol for whatever may connect in the daemon's place. The library puts the
 * type bytes of a message into enumerations before it looks whether they are in range; here such a
 * byte raises TProtocolException (INVALID_DATA). Messages must begin with a version, as the
 * daemon's do.
 */
class NotificationProtocol
    : public apache::thrift::protocol::TVirtualProtocol<NotificationProtocol,
                                                        apache::thrift::protocol::TBinaryProtocol> {
 public:
  using MessageType = apache::thrift::protocol::TMessageType;  ///< call, reply, …
  using Type = apache::thrift::protocol::TType;                ///< of a value

  /** Strings and containers over the limits are refused before anything is allocated for them. */
  NotificationProtocol(const std::shared_ptr<apache::thrift::transport::TTransport>& transport,
                       int32_t stringLimit, int32_t containerLimit);

  ///@{
  /** As in the library, but for the check. */
  uint32_t readMessageBegin(std::string& name, MessageType& type, int32_t& sequenceId);
  uint32_t readFieldBegin(std::string& name, Type& type, int16_t& id);
  uint32_t readMapBegin(Type& keyType, Type& valueType, uint32_t& size);
  uint32_t readListBegin(Type& elementType, uint32_t& size);
  uint32_t readSetBegin(Type& elementType, uint32_t& size);
  ///@}

 private:
  void checkTypes(uint32_t count);
};

/** Makes a NotificationProtocol for every connection. */
class NotificationProtocolFactory : public apache::thrift::protocol::TProtocolFactory {
 public:
  /** The limits are those of every protocol that it makes. */
  NotificationProtocolFactory(int32_t stringLimit, int32_t containerLimit)
      : stringLimit_(stringLimit), containerLimit_(containerLimit) {}

  /** Over any transport; never null. */
  std::shared_ptr<apache::thrift::protocol::TProtocol> getProtocol(
      std::shared_ptr<apache::thrift::transport::TTransport> transport) override;

 private:
  const int32_t stringLimit_;
  const int32_t containerLimit_;
};

}  // namespace tevra::tools
