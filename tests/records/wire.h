#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

namespace tevra::test {

/** `text` as something to read from. */
inline std::shared_ptr<apache::thrift::transport::TMemoryBuffer> memoryOf(const std::string& text) {
  auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  buffer->write(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
  return buffer;
}

template <class Protocol, class Record>
std::string written(const Record& record) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  Protocol protocol(buffer);
  record.write(&protocol);
  return buffer->getBufferAsString();
}

template <class Record>
std::string binaryOf(const Record& record) {
  return written<apache::thrift::protocol::TBinaryProtocol>(record);
}

template <class Record>
std::string jsonOf(const Record& record) {
  return written<apache::thrift::protocol::TJSONProtocol>(record);
}

/** A record fresh from `bytes`. */
template <class Record>
Record fromBinary(const std::string& bytes) {
  apache::thrift::protocol::TBinaryProtocol protocol(memoryOf(bytes));
  Record record;
  record.read(&protocol);
  return record;
}

/** One field of a struct in the binary protocol. */
struct WireField {
  int16_t id = 0;
  std::string type;   ///< "i32", "list<struct>", ...
  std::string bytes;  ///< the whole field: type, id and value
};

/**
 * Takes one struct of the binary protocol apart, without Thrift's help. Raises std::runtime_error
 * when `bytes` is anything else than exactly one struct.
 */
std::vector<WireField> wireFields(const std::string& bytes);

/** The types of the fields, in order and separated by blanks. */
std::string wireTypes(const std::vector<WireField>& fields);

}  // namespace tevra::test
