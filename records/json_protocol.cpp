#include "records/json_protocol.h"

#include <algorithm>

namespace tevra {

using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;

JsonProtocol::JsonProtocol(const std::shared_ptr<apache::thrift::transport::TTransport>& transport,
                           uint64_t inputSize)
    : TVirtualProtocol(transport), elementsLeft_(std::min(inputSize, kMaxElementsPerFile)) {}

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
  countElements(size);
  return consumed;
}

uint32_t JsonProtocol::readListBegin(TType& elementType, uint32_t& size) {
  const uint32_t consumed = TJSONProtocol::readListBegin(elementType, size);
  countElements(size);
  return consumed;
}

uint32_t JsonProtocol::readSetBegin(TType& elementType, uint32_t& size) {
  const uint32_t consumed = TJSONProtocol::readSetBegin(elementType, size);
  countElements(size);
  return consumed;
}

void JsonProtocol::countElements(uint32_t size) {
  if (size > elementsLeft_) {
    throw TProtocolException(TProtocolException::SIZE_LIMIT, "container larger than its file");
  }
  elementsLeft_ -= size;
}

}  // namespace tevra
