#include "records/json_protocol.h"

#include <sys/stat.h>

namespace tevra {

using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;

JsonProtocol::JsonProtocol(const std::shared_ptr<apache::thrift::transport::TTransport>& transport,
                           uint64_t inputSize)
    : TVirtualProtocol(transport), inputSize_(inputSize) {}

uint32_t JsonProtocol::readBool(bool& value) {
  int16_t number = 0;
  const uint32_t consumed = readI16(number);
  value = number != 0;
  return consumed;
}

uint32_t JsonProtocol::readByte(int8_t& byte) {
  int16_t value = 0;
  const uint32_t consumed = readI16(value);
  if (value < INT8_MIN || value > UINT8_MAX) {
    throw TProtocolException(TProtocolException::INVALID_DATA, "byte out of range");
  }
  byte = static_cast<int8_t>(value);
  return consumed;
}

uint32_t JsonProtocol::readMapBegin(TType& keyType, TType& valueType, uint32_t& size) {
  const uint32_t consumed = TJSONProtocol::readMapBegin(keyType, valueType, size);
  checkSize(size);
  return consumed;
}

uint32_t JsonProtocol::readListBegin(TType& elementType, uint32_t& size) {
  const uint32_t consumed = TJSONProtocol::readListBegin(elementType, size);
  checkSize(size);
  return consumed;
}

uint32_t JsonProtocol::readSetBegin(TType& elementType, uint32_t& size) {
  const uint32_t consumed = TJSONProtocol::readSetBegin(elementType, size);
  checkSize(size);
  return consumed;
}

void JsonProtocol::checkSize(uint32_t size) const {
  if (size > inputSize_) {
    throw TProtocolException(TProtocolException::SIZE_LIMIT, "container larger than its file");
  }
}

uint64_t fileSize(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

}  // namespace tevra
