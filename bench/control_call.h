#pragma once

#include <memory>
#include <string>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "im_SIControlSrv.h"

namespace tevra::bench {

/** Thrift's own protocol on its fast path, with none of the checks that a daemon needs. */
using BareProtocol =
    apache::thrift::protocol::TBinaryProtocolT<apache::thrift::transport::TBufferBase>;
using BareClient = thrift::in_module::im_SIControlSrvClientT<BareProtocol>;

/** The bytes that a client's call `send` puts into a frame. */
template <class Send>
std::string messageOf(Send send) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  BareClient client(std::make_shared<BareProtocol>(buffer));
  send(client);
  return buffer->getBufferAsString();
}

/** Reads `message` into `arguments`, the arguments of its call, as Thrift does at best. */
template <class Arguments>
void decode(std::string& message, Arguments& arguments) {
  using apache::thrift::transport::TMemoryBuffer;
  BareProtocol protocol(std::make_shared<TMemoryBuffer>(reinterpret_cast<uint8_t*>(message.data()),
                                                        static_cast<uint32_t>(message.size())));
  std::string name;
  apache::thrift::protocol::TMessageType type{};
  int32_t sequenceId = 0;
  protocol.readMessageBegin(name, type, sequenceId);
  arguments.read(&protocol);
}

}  // namespace tevra::bench
