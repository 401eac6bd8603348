#pragma once

#include <memory>
#include <string>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "tests/support/files.h"

namespace tevra::test {

/** Where the daemon keeps what survives, below its configuration root. */
inline std::string pidRemapFile(int32_t mptsIndex) {
  return "PIDRemap" + std::to_string(mptsIndex);
}
inline std::string tableStoreFile(int32_t mptsIndex) {
  return "Tornel/TableStoreFile" + std::to_string(mptsIndex);
}
inline std::string eitVersionFile(int32_t mptsIndex) {
  return "Tornel/EITTableVersionStoreFile" + std::to_string(mptsIndex);
}

/** The record in a file of the daemon, through the library's own JSON protocol. Raises Thrift's
 * exceptions, also when there is anything behind the record. */
template <class Record>
Record readRecord(const std::string& path) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  std::string text = readText(path);
  buffer->write(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
  apache::thrift::protocol::TJSONProtocol protocol(buffer);
  Record record;
  record.read(&protocol);
  if (buffer->available_read() > 0) {
    throw apache::thrift::TException("something follows the record in " + path);
  }
  return record;
}

template <class Record>
void writeRecord(const std::string& path, const Record& record) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  apache::thrift::protocol::TJSONProtocol protocol(buffer);
  record.write(&protocol);
  writeText(path, buffer->getBufferAsString());
}

}  // namespace tevra::test
