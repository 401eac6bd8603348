#include "tests/system/recorded_calls.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TVirtualProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "im_SIControlSrv.h"
#include "tests/support/messages.h"
#include "tests/system/multiplex.h"

namespace tevra::test {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TProtocol;
using apache::thrift::protocol::TType;
using apache::thrift::protocol::TVirtualProtocol;
using apache::thrift::transport::TMemoryBuffer;
using thrift::in_module::im_SIControlSrvClient;
using thrift::in_module::SIService;

/** Notes where the parts of a message begin while it is written. */
class MarkingProtocol : public TVirtualProtocol<MarkingProtocol, TBinaryProtocol> {
 public:
  MarkingProtocol(const std::shared_ptr<TMemoryBuffer>& buffer, RecordedCall& call)
      : TVirtualProtocol(buffer), buffer_(*buffer), call_(call) {}

  uint32_t writeFieldBegin(const char* name, TType type, int16_t id) {
    open_.push_back(position());
    return TBinaryProtocol::writeFieldBegin(name, type, id);
  }
  uint32_t writeFieldEnd() {
    call_.fields.push_back({open_.back(), position()});
    open_.pop_back();
    return TBinaryProtocol::writeFieldEnd();
  }
  uint32_t writeListBegin(TType elementType, uint32_t size) {
    call_.elementTypes.push_back(position());
    call_.sizes.push_back(position() + 1);
    return TBinaryProtocol::writeListBegin(elementType, size);
  }
  uint32_t writeMapBegin(TType keyType, TType valueType, uint32_t size) {
    call_.elementTypes.push_back(position());
    call_.elementTypes.push_back(position() + 1);
    call_.sizes.push_back(position() + 2);
    return TBinaryProtocol::writeMapBegin(keyType, valueType, size);
  }
  uint32_t writeString(const std::string& text) {
    call_.sizes.push_back(position());
    return TBinaryProtocol::writeString(text);
  }
  uint32_t writeBinary(const std::string& bytes) { return writeString(bytes); }

 private:
  [[nodiscard]] size_t position() const { return buffer_.available_read(); }

  TMemoryBuffer& buffer_;
  RecordedCall& call_;
  std::vector<size_t> open_;
};

RecordedCall record(const std::string& method,
                    const std::function<void(im_SIControlSrvClient&)>& send) {
  constexpr size_t kMethodSize = 4;  // behind the version and the message's type
  RecordedCall call = {method, "", {}, {kMethodSize}, {}};
  const auto buffer = std::make_shared<TMemoryBuffer>();
  im_SIControlSrvClient client(std::make_shared<MarkingProtocol>(buffer, call));
  send(client);
  call.message = buffer->getBufferAsString();
  return call;
}

NIT fullNit() {
  NIT nit = multiplexNit();
  nit.descriptors = {makeDescriptor(0x40, "Tevra")};
  nit.transportStreams[0].descriptors = {makeDescriptor(0x41, "abc")};
  return nit;
}

BAT fullBat() {
  BAT bat = multiplexBat();
  bat.descriptors = {makeDescriptor(0x47, "Bouquet")};
  bat.transportStreams.emplace_back().descriptors = {makeDescriptor(0x41, "abc")};
  return bat;
}

TOT fullTot() {
  TOT tot = totAt(1700000000);
  tot.descriptors = {makeDescriptor(0x58, std::string(13, '\0'))};
  return tot;
}

std::vector<RecordedCall> recordEveryCall() {
  using Client = im_SIControlSrvClient;
  const EITMap following = mapOf({eit(kTelevision, 0x4E, 0)});
  const EITMap schedule = mapOf({eit(kTelevision, 0x50, 0)});
  SIService data;
  data.name = "headend";
  return {
      record("getSIData", [](Client& client) { client.send_getSIData(); }),
      record("SISetData", [&](Client& client) { client.send_SISetData(data); }),
      record("sendCmd", [](Client& client) { client.send_sendCmd(7); }),
      record("setPAT", [](Client& client) { client.send_setPAT(multiplexPat()); }),
      record("setSDT", [](Client& client) { client.send_setSDT(multiplexSdt()); }),
      record("setPMT", [](Client& client) { client.send_setPMT(televisionPmt()); }),
      record("setNIT", [](Client& client) { client.send_setNIT(fullNit()); }),
      record("setTOT", [](Client& client) { client.send_setTOT(fullTot()); }),
      record("setBAT", [](Client& client) { client.send_setBAT(fullBat()); }),
      record("setCAT", [](Client& client) { client.send_setCAT(multiplexCat()); }),
      record("setEITPresentFollowing",
             [&](Client& client) { client.send_setEITPresentFollowing(following); }),
      record("setEITSchedule", [&](Client& client) { client.send_setEITSchedule(schedule); }),
      record("getSrvOutputData",
             [](Client& client) { client.send_getSrvOutputData(televisionRequest()); }),
  };
}

/** The zero of a type, or a container with nothing in it. */
std::string emptyValue(int type) {
  constexpr char kByte = apache::thrift::protocol::T_BYTE;
  switch (type) {
    case apache::thrift::protocol::T_I16:
      return std::string(2, '\0');
    case apache::thrift::protocol::T_I32:
    case apache::thrift::protocol::T_STRING:
      return bigEndian(0);
    case apache::thrift::protocol::T_I64:
    case apache::thrift::protocol::T_DOUBLE:
      return std::string(8, '\0');
    case apache::thrift::protocol::T_LIST:
    case apache::thrift::protocol::T_SET:
      return kByte + bigEndian(0);
    case apache::thrift::protocol::T_MAP:
      return std::string(2, kByte) + bigEndian(0);
    default:
      return std::string(1, '\0');
  }
}

}  // namespace

const std::vector<RecordedCall>& everyCall() {
  static const std::vector<RecordedCall> calls = recordEveryCall();
  return calls;
}

const RecordedCall& recordedCall(const std::string& method) {
  for (const RecordedCall& call : everyCall()) {
    if (call.method == method) {
      return call;
    }
  }
  throw std::out_of_range("no call " + method);
}

std::string messageHead(const std::string& method, int type) {
  std::string message = callMessage(method);
  message.pop_back();  // the end of its empty argument structure
  message[3] = static_cast<char>(type);
  return message;
}

std::string fieldHead(int type, int id) {
  return {static_cast<char>(type), static_cast<char>(id >> 8), static_cast<char>(id & 0xFF)};
}

std::string emptyField(int type, int id) {
  return fieldHead(type, id) + emptyValue(type);
}

const std::vector<int>& fieldTypes() {
  using namespace apache::thrift::protocol;  // NOLINT(google-build-using-namespace): its constants
  static const std::vector<int> types = {T_BOOL,   T_BYTE,   T_DOUBLE, T_I16, T_I32, T_I64,
                                         T_STRING, T_STRUCT, T_MAP,    T_SET, T_LIST};
  return types;
}

std::string withBytes(std::string message, size_t offset, const std::string& bytes) {
  return message.replace(offset, bytes.size(), bytes);
}

}  // namespace tevra::test
