#include "records/json_protocol.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace tevra {
namespace {

using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;
using apache::thrift::transport::TMemoryBuffer;

/** What the library takes for part of a number. */
constexpr std::string_view kNumberCharacters = "+-.0123456789Ee";

/** The number that `text` ends with. */
template <class Integer>
Integer integerAtEnd(std::string_view text) {
  const std::string_view number = text.substr(text.find_last_not_of(kNumberCharacters) + 1);
  const char* const end = number.data() + number.size();
  Integer value = 0;
  const auto [parsed, error] = std::from_chars(number.data(), end, value);
  if (error != std::errc() || parsed != end) {
    throw TProtocolException(
        TProtocolException::INVALID_DATA,
        "no integer of its type: \"" + std::string(number.substr(0, 40)) + "\"");
  }
  return value;
}

}  // namespace

JsonProtocol::JsonProtocol(const std::shared_ptr<TMemoryBuffer>& text)
    : TVirtualProtocol(text), text_(text), textSize_(text->available_read()) {}

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

uint32_t JsonProtocol::readI16(int16_t& value) {
  return readInteger(value, &TJSONProtocol::readI16);
}

uint32_t JsonProtocol::readI32(int32_t& value) {
  return readInteger(value, &TJSONProtocol::readI32);
}

uint32_t JsonProtocol::readI64(int64_t& value) {
  return readInteger(value, &TJSONProtocol::readI64);
}

template <class Integer>
uint32_t JsonProtocol::readInteger(Integer& value, uint32_t (TJSONProtocol::*read)(Integer&)) {
  const char* const start = position();
  Integer unused = 0;
  const uint32_t consumed = (this->*read)(unused);
  // Behind the number: its closing quote, or the delimiter with which the library saw it end.
  value = integerAtEnd<Integer>(passedSince(start, 1));
  return consumed;
}

uint32_t JsonProtocol::readFieldBegin(std::string& name, TType& type, int16_t& id) {
  const char* const start = position();
  int16_t unused = 0;
  const uint32_t consumed = TJSONProtocol::readFieldBegin(name, type, unused);
  if (type != apache::thrift::protocol::T_STOP) {
    const std::string_view passed = passedSince(start, 0);  // such as ,"3":{"i32"
    id = integerAtEnd<int16_t>(passed.substr(0, passed.find("\":")));
  }
  return consumed;
}

uint32_t JsonProtocol::readStructBegin(std::string& name) {
  checkRecords(1);
  ++records_;
  return TJSONProtocol::readStructBegin(name);
}

uint32_t JsonProtocol::readMapBegin(TType& keyType, TType& valueType, uint32_t& size) {
  const char* const start = position();
  const uint32_t consumed = TJSONProtocol::readMapBegin(keyType, valueType, size);
  size = integerAtEnd<uint32_t>(passedSince(start, 2));  // behind it: ,{
  checkSize(size);
  return consumed;
}

uint32_t JsonProtocol::readListBegin(TType& elementType, uint32_t& size) {
  const char* const start = position();
  const uint32_t consumed = TJSONProtocol::readListBegin(elementType, size);
  size = integerAtEnd<uint32_t>(passedSince(start, 1));
  checkSize(size);
  checkRecords(size);
  return consumed;
}

uint32_t JsonProtocol::readSetBegin(TType& elementType, uint32_t& size) {
  const char* const start = position();
  const uint32_t consumed = TJSONProtocol::readSetBegin(elementType, size);
  size = integerAtEnd<uint32_t>(passedSince(start, 1));
  checkSize(size);
  checkRecords(size);
  return consumed;
}

/** Up to where the library has taken the text: at times one character more than it has used. */
const char* JsonProtocol::position() const {
  uint32_t atLeast = 0;
  return reinterpret_cast<const char*>(text_->borrow(nullptr, &atLeast));
}

/** What the library has taken since `start`, without the last `charactersBehind`. */
std::string_view JsonProtocol::passedSince(const char* start, size_t charactersBehind) const {
  const std::string_view passed(start, static_cast<size_t>(position() - start));
  return passed.substr(0, passed.size() - std::min(passed.size(), charactersBehind));
}

void JsonProtocol::checkSize(uint32_t size) const {
  if (size > textSize_) {
    throw TProtocolException(TProtocolException::SIZE_LIMIT, "container larger than its file");
  }
}

/**
 * Generated code makes room for all elements of a list at once, and for records whatever their type
 * is said to be.
 */
void JsonProtocol::checkRecords(uint32_t more) const {
  if ((records_ + more) * kSmallestRecord > std::max(textSize_, kSmallText)) {
    throw TProtocolException(TProtocolException::SIZE_LIMIT, "more records than its file can hold");
  }
}

}  // namespace tevra
