#include "tests/support/messages.h"

namespace tevra::test {
namespace {

constexpr uint32_t kVersionOneCall = 0x80010001;
constexpr char kCall = 1;
constexpr char kList = 15;
constexpr char kStruct = 12;
constexpr char kStop = 0;

std::string named(const std::string& method) {
  return bigEndian(static_cast<uint32_t>(method.size())) + method;
}

std::string fieldHeader(char type, char id) {
  return {type, 0, id};
}

}  // namespace

std::string callMessage(const std::string& method) {
  return bigEndian(kVersionOneCall) + named(method) + bigEndian(7) + kStop;
}

std::string unversionedCallMessage(const std::string& method) {
  return named(method) + kCall + bigEndian(7) + kStop;
}

std::string hugeListMessage(int32_t size) {
  std::string message = bigEndian(kVersionOneCall) + named("setPAT") + bigEndian(7);
  message += fieldHeader(kStruct, 1) + fieldHeader(kList, 4);
  message += kStruct + bigEndian(static_cast<uint32_t>(size));
  message += kStop;          // the one programme
  message.append(2, kStop);  // PAT, arguments
  return message;
}

std::string framed(const std::string& message) {
  return bigEndian(static_cast<uint32_t>(message.size())) + message;
}

std::string bigEndian(uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(value >> shift & 0xFF);
  }
  return bytes;
}

}  // namespace tevra::test
