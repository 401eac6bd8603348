#include "records/json_protocol.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <type_traits>
#include <utility>

#include <thrift/protocol/TBase64Utils.h>

namespace tevra {
namespace {

using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;
using apache::thrift::transport::TMemoryBuffer;
using apache::thrift::transport::TTransportException;

constexpr uint32_t kNotCounted = 0;
constexpr char kNone = 0;
constexpr size_t kBase64Group = 4;

/** What the library takes for part of a number. */
constexpr std::string_view kNumberCharacters = "+-.0123456789Ee";

/** What the library looks at in the name of a type, besides that more must follow. */
constexpr std::array<std::pair<std::string_view, TType>, 11> kTypes = {{
    {"i3", apache::thrift::protocol::T_I32},
    {"st", apache::thrift::protocol::T_STRING},
    {"r", apache::thrift::protocol::T_STRUCT},
    {"l", apache::thrift::protocol::T_LIST},
    {"t", apache::thrift::protocol::T_BOOL},
    {"m", apache::thrift::protocol::T_MAP},
    {"se", apache::thrift::protocol::T_SET},
    {"i8", apache::thrift::protocol::T_BYTE},
    {"i1", apache::thrift::protocol::T_I16},
    {"i6", apache::thrift::protocol::T_I64},
    {"d", apache::thrift::protocol::T_DOUBLE},
}};

[[noreturn]] void refuse(const std::string& reason) {
  throw TProtocolException(TProtocolException::INVALID_DATA, reason);
}

/** Characters that are no digits give what the library makes of them. */
std::string fromBase64(std::string_view text) {
  if (text == "==") {
    refuse("padding of nothing");  // the library reads beyond its text
  }
  for (int padding = 0; padding < 2 && !text.empty() && text.back() == '='; ++padding) {
    text.remove_suffix(1);
  }
  std::string bytes;
  bytes.reserve(text.size() * 3 / 4);
  for (size_t start = 0; start + 1 < text.size(); start += kBase64Group) {
    std::array<char, kBase64Group> group{};
    const size_t size = text.copy(group.data(), kBase64Group, start);
    apache::thrift::protocol::base64_decode(reinterpret_cast<uint8_t*>(group.data()),
                                            static_cast<uint32_t>(size));
    bytes.append(group.data(), size - 1);
  }
  return bytes;
}

}  // namespace

JsonProtocol::JsonProtocol(const std::shared_ptr<TMemoryBuffer>& text)
    : TVirtualProtocol(text), textSize_(text->available_read()) {
  uint32_t size = 0;
  uint8_t* start = nullptr;
  text->getBuffer(&start, &size);
  at_ = reinterpret_cast<const char*>(start);
  end_ = at_ + size;
}

char JsonProtocol::peek() const {
  if (at_ == end_) {
    throw TTransportException(TTransportException::END_OF_FILE, "No more data to read.");
  }
  return *at_;
}

/** The place among `characters` of the one that comes next. */
size_t JsonProtocol::takeOneOf(std::string_view characters) {
  const size_t place = characters.find(peek());
  if (place == std::string_view::npos) {
    refuse("Expected '" + std::string(characters) + "'; got '" + *at_ + "'.");
  }
  ++at_;
  return place;
}

/** Passes over what separates a value from the one before. True when it is a key. */
bool JsonProtocol::separate() {
  if (open_.empty()) {
    return false;
  }
  Container& in = open_.back();
  if (in.separator != kNone) {
    take(in.separator);
  }
  const bool isKey = in.isObject && in.separator != ':';
  in.separator = isKey ? ':' : ',';
  return isKey;
}

uint32_t JsonProtocol::begin(char bracket) {
  (void)separate();
  take(bracket);
  open_.push_back({bracket == '{', kNone});
  return kNotCounted;
}

uint32_t JsonProtocol::end(std::string_view brackets) {
  for (const char bracket : brackets) {
    take(bracket);
    open_.pop_back();
  }
  return kNotCounted;
}

uint32_t JsonProtocol::readStructBegin(std::string& /*name*/) {
  checkRecords(1);
  ++records_;
  return begin('{');
}

uint32_t JsonProtocol::readFieldBegin(std::string& /*name*/, Type& type, int16_t& id) {
  if (peek() == '}') {
    type = apache::thrift::protocol::T_STOP;
    return kNotCounted;
  }
  readNumber(id);
  if (id < 0) {
    refuse("negative field id");
  }
  begin('{');
  return readType(type);
}

uint32_t JsonProtocol::readMapBegin(Type& keyType, Type& valueType, uint32_t& size) {
  begin('[');
  readType(keyType);
  readType(valueType);
  readSize(size);
  return begin('{');
}

uint32_t JsonProtocol::readListBegin(Type& elementType, uint32_t& size) {
  begin('[');
  readType(elementType);
  readSize(size);
  checkRecords(size);
  return kNotCounted;
}

uint32_t JsonProtocol::readType(Type& type) {
  (void)separate();
  const std::string name = takeText();
  for (const auto& [beginning, known] : kTypes) {
    if (name.size() > 1 && name.compare(0, beginning.size(), beginning) == 0) {
      type = known;
      return kNotCounted;
    }
  }
  throw TProtocolException(TProtocolException::NOT_IMPLEMENTED, "Unrecognized type");
}

void JsonProtocol::readSize(uint32_t& size) {
  readNumber(size);
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

/** Numbers that are keys stand in quotes, and so do doubles that are names. */
template <class Number>
uint32_t JsonProtocol::readNumber(Number& value) {
  const bool quoted = separate() || (std::is_floating_point_v<Number> && peek() == '"');
  if (quoted) {
    take('"');
  }
  Number number{};
  const auto [stop, error] = std::from_chars(at_, end_, number);
  at_ = stop;
  if (error != std::errc() || kNumberCharacters.find(peek()) != std::string_view::npos) {
    refuse("no number of its type before byte " + std::to_string(textSize_ - (end_ - at_)));
  }
  if (quoted) {
    take('"');
  }
  value = number;
  return kNotCounted;
}

template uint32_t JsonProtocol::readNumber(int16_t&);
template uint32_t JsonProtocol::readNumber(int32_t&);
template uint32_t JsonProtocol::readNumber(int64_t&);
template uint32_t JsonProtocol::readNumber(double&);

uint32_t JsonProtocol::readBool(bool& value) {
  int16_t number = 0;
  readNumber(number);
  value = number != 0;
  return kNotCounted;
}

uint32_t JsonProtocol::readByte(int8_t& byte) {
  int16_t number = 0;
  readNumber(number);
  if (number < INT8_MIN || number > UINT8_MAX) {
    refuse("byte out of range");
  }
  byte = static_cast<int8_t>(number);
  return kNotCounted;
}

uint32_t JsonProtocol::readBinary(std::string& bytes) {
  (void)separate();
  bytes = fromBase64(takeText());
  return kNotCounted;
}

std::string JsonProtocol::takeText() {
  take('"');
  std::string text;
  while (true) {
    const auto isSpecial = [](char character) { return character == '"' || character == '\\'; };
    const char* const stop = std::find_if(at_, end_, isSpecial);
    text.append(at_, stop);
    at_ = stop;
    if (takeOneOf("\"\\") == 0) {
      return text;
    }
    const char escaped = takeEscaped();
    if (escaped != '\0') {  // which the library loses, too
      text += escaped;
    }
  }
}

/** Behind a backslash. */
char JsonProtocol::takeEscaped() {
  constexpr std::string_view kMeanings = "\"\\\b\f\n\r\t";
  const size_t escape = takeOneOf("\"\\bfnrtu");
  if (escape < kMeanings.size()) {
    return kMeanings[escape];
  }
  take('0');
  take('0');
  const size_t high = takeOneOf("01234567");
  return static_cast<char>(high * 16 + takeOneOf("0123456789abcdef"));
}

}  // namespace tevra
