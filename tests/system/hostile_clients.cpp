#include "tests/system/hostile_clients.h"

#include <algorithm>
#include <memory>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "tests/support/control_client.h"
#include "tests/support/messages.h"
#include "tests/system/multiplex.h"
#include "tests/system/recorded_calls.h"

namespace tevra::test {
namespace {

using apache::thrift::TApplicationException;
using apache::thrift::protocol::T_EXCEPTION;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TMessageType;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TMemoryBuffer;

/** What an allocator may keep back of tables replaced by others. */
constexpr int64_t kMemoryBound = 4096;

DaemonSetup quiet() {
  DaemonSetup setup;
  setup.level = 4;  // thousands of calls: their ordinary lines are not wanted
  return setup;
}

Answer parsed(const std::string& bytes) {
  Answer answer;
  if (bytes.empty()) {
    return answer;
  }
  const auto buffer = std::make_shared<TMemoryBuffer>();
  buffer->write(reinterpret_cast<const uint8_t*>(bytes.data()),
                static_cast<uint32_t>(bytes.size()));
  TBinaryProtocol protocol(std::make_shared<TFramedTransport>(buffer));
  TMessageType type{};
  protocol.readMessageBegin(answer.method, type, answer.sequence);
  answer.kind = type == T_EXCEPTION ? Answer::Kind::kException : Answer::Kind::kReply;
  if (type == T_EXCEPTION) {
    answer.exception.read(&protocol);
  }
  return answer;
}

std::string hexOf(const std::string& bytes) {
  constexpr size_t kMost = 1000;
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text;
  for (size_t index = 0; index < std::min(bytes.size(), kMost); ++index) {
    const auto byte = static_cast<unsigned char>(bytes[index]);
    text += {kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
  return text;
}

}  // namespace

HostileClients::HostileClients() : daemon_(root_.path(), quiet()) {
  constexpr int kRounds = 3;  // what is made once is made by then
  for (int round = 0; round < kRounds; ++round) {
    for (const RecordedCall& call : everyCall()) {
      expectReply(call.method, call.message);
    }
    expectRefusal("GET / HTTP/1.0\r\n\r\n");
    expectService();
  }
  residentAtFirst_ = figures_.residentSize();
  descriptorsAtFirst_ = figures_.descriptors();
}

void HostileClients::TearDown() {
  ASSERT_TRUE(daemon_.running()) << "died after " << hexOf(lastSent_);
  expectService();
  EXPECT_TRUE(eventually([&] { return figures_.descriptors() <= descriptorsAtFirst_; }))
      << figures_.descriptors() << " descriptors for " << descriptorsAtFirst_;
  expectMemoryBelow(kMemoryBound, figures_.residentSize() - residentAtFirst_);
}

std::string HostileClients::exchange(const std::string& bytes) {
  lastSent_ = bytes;
  const RawConnection connection(kFirstControlPort);
  connection.send(bytes);
  connection.finish();
  const std::optional<std::string> answer = connection.readToEnd();
  EXPECT_TRUE(answer) << "neither answered nor closed: " << hexOf(bytes);
  return answer.value_or("");
}

Answer HostileClients::answerTo(const std::string& message) {
  Answer answer = parsed(exchange(framed(message)));
  // What escapes the handler is answered with this type.
  EXPECT_FALSE(answer.kind == Answer::Kind::kException &&
               answer.exception.getType() == TApplicationException::UNKNOWN)
      << answer.exception.what() << " for " << hexOf(message);
  return answer;
}

void HostileClients::expectReply(const std::string& method, const std::string& message) {
  const Answer answer = answerTo(message);
  EXPECT_EQ(answer.kind, Answer::Kind::kReply) << method << ": " << hexOf(message);
  EXPECT_EQ(answer.method, method);
}

void HostileClients::expectRefusal(const std::string& bytes) {
  lastSent_ = bytes;
  const RawConnection connection(kFirstControlPort);
  connection.send(bytes);
  EXPECT_TRUE(connection.closedByPeer()) << hexOf(bytes);
}

void HostileClients::expectService() {
  ControlClient client;
  thrift::in_module::SIService service;
  client->getSIData(service);
  EXPECT_EQ(service.name, "");
}

int64_t HostileClients::peakGrowth(const std::function<void()>& attack) const {
  figures_.resetPeak();
  const int64_t before = figures_.peakResidentSize();
  attack();
  return figures_.peakResidentSize() - before;
}

int64_t HostileClients::mappedGrowth(const std::function<void()>& attack) const {
  const int64_t before = figures_.peakVirtualSize();
  attack();
  return figures_.peakVirtualSize() - before;
}

}  // namespace tevra::test
