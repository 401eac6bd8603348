#include "control/control_transport.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thrift/transport/TSocket.h>
#include <thrift/transport/TTransportException.h>
#include <thrift/transport/TVirtualTransport.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "records/frame_protocol.h"
#include "tests/support/messages.h"

namespace tevra::test {
namespace {

using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransportException;

constexpr uint32_t kMebibyte = 1024 * 1024;

/** A connection that yields frames of one size, as many as are asked for, without holding them. */
class FrameSource : public apache::thrift::transport::TVirtualTransport<FrameSource> {
 public:
  explicit FrameSource(uint32_t frameSize) : head_(bigEndian(frameSize)), frameSize_(frameSize) {}

  uint32_t read(uint8_t* buffer, uint32_t length) {
    const uint64_t position = read_ % (head_.size() + frameSize_);
    const uint64_t end = position < head_.size() ? head_.size() : head_.size() + frameSize_;
    length = static_cast<uint32_t>(std::min<uint64_t>(length, end - position));
    std::memset(buffer, 'x', length);
    if (position < head_.size()) {
      std::memcpy(buffer, head_.data() + position, length);
    }
    read_ += length;
    return length;
  }

 private:
  std::string head_;
  uint64_t frameSize_;
  uint64_t read_ = 0;
};

/** A connection that yields the given bytes and then ends; takes what is written. */
class ByteSource : public apache::thrift::transport::TVirtualTransport<ByteSource> {
 public:
  explicit ByteSource(std::string bytes) : bytes_(std::move(bytes)) {}

  uint32_t read(uint8_t* buffer, uint32_t length) {
    length = std::min(length, static_cast<uint32_t>(bytes_.size() - read_));
    std::memcpy(buffer, bytes_.data() + read_, length);
    read_ += length;
    return length;
  }

  void write(const uint8_t* buffer, uint32_t length) {
    written.append(reinterpret_cast<const char*>(buffer), length);
  }

  std::string written;

 private:
  std::string bytes_;
  size_t read_ = 0;
};

/** Shows what the transport holds on to. */
class InspectableTransport : public ControlTransport {
 public:
  using ControlTransport::ControlTransport;
  [[nodiscard]] const uint8_t* readPosition() const { return rBase_; }
  [[nodiscard]] uint32_t readBufferSize() const { return rBufSize_; }
  [[nodiscard]] uint32_t writeBufferSize() const { return wBufSize_; }
};

std::string readAll(ControlTransport& transport, uint32_t length) {
  std::string bytes(length, '\0');
  transport.readAll(reinterpret_cast<uint8_t*>(bytes.data()), length);
  return bytes;
}

/** Reads one frame of `size` as one call does. */
void readFrame(ControlTransport& transport, uint32_t size) {
  EXPECT_EQ(std::string(size, 'x'), readAll(transport, size));
  transport.readEnd();
}

TEST(ControlTransport, FramesAreReadOneAfterTheOther) {
  ControlTransport transport(std::make_shared<ByteSource>(framed("one") + framed("2")));
  EXPECT_EQ("one", readAll(transport, 3));
  EXPECT_EQ("2", readAll(transport, 1));
}

TEST(ControlTransport, WhatIsWrittenBecomesOneFrame) {
  const auto connection = std::make_shared<ByteSource>("");
  ControlTransport transport(connection);
  const std::string message(1000, 'y');
  transport.write(reinterpret_cast<const uint8_t*>(message.data()), 1000);
  EXPECT_EQ("", connection->written);
  transport.flush();
  EXPECT_EQ(framed(message), connection->written);
}

TEST(ControlTransport, FrameBeyondTheLibrarysDefaultIsTaken) {
  constexpr uint32_t kLibraryLimit = 16384000;
  ControlTransport transport(std::make_shared<FrameSource>(kLibraryLimit + 1));
  readFrame(transport, kLibraryLimit + 1);
}

TEST(ControlTransport, FrameOfTheLimitIsTaken) {
  ControlTransport transport(std::make_shared<FrameSource>(kMaxFrameSize));
  readFrame(transport, kMaxFrameSize);
}

/** Expects an exception of Thrift's that tells `claim`. */
void expectRefusal(ControlTransport& transport, int64_t claim) {
  try {
    (void)readAll(transport, 1);
    FAIL() << "was read";
  } catch (const Refused<TTransportException>& refused) {
    EXPECT_STREQ("bytes of a frame", refused.unit);
    EXPECT_EQ(claim, refused.claim);
    EXPECT_EQ(64 * kMebibyte, refused.limit);
  }
}

TEST(ControlTransport, FrameBeyondTheLimitIsRefused) {
  for (const uint32_t size : {kMaxFrameSize + 1U, 0x7FFFFFFFU}) {
    ControlTransport transport(std::make_shared<FrameSource>(size));
    expectRefusal(transport, size);
  }
}

TEST(ControlTransport, NegativeFrameSizeIsRefused) {
  for (const int32_t size : {INT32_MIN, -1}) {
    ControlTransport transport(
        std::make_shared<ByteSource>(bigEndian(static_cast<uint32_t>(size)) + "x"));
    expectRefusal(transport, size);
  }
}

TEST(ControlTransport, ConnectionNeverWearsOut) {
  constexpr uint32_t kSize = 10 * kMebibyte;
  ControlTransport transport(std::make_shared<FrameSource>(kSize));
  for (int call = 0; call < 25; ++call) {  // the library's limit for a message lies at 100 MB
    readFrame(transport, kSize);
  }
}

TEST(ControlTransport, ConnectionOfManySmallFramesNeverWearsOut) {
  ControlTransport transport(std::make_shared<FrameSource>(100));
  for (int call = 0; call < 1100000; ++call) {
    uint8_t frame[100];
    ASSERT_EQ(100U, transport.readAll(frame, 100));
    transport.readEnd();
  }
}

TEST(ControlTransport, EndBetweenFramesIsAnEndAndInsideOneAnError) {
  ControlTransport clean(std::make_shared<ByteSource>(framed("one")));
  EXPECT_EQ("one", readAll(clean, 3));
  uint8_t byte = 0;
  EXPECT_EQ(0U, clean.read(&byte, 1));
  const std::string whole = framed("three");
  for (size_t length = 1; length < whole.size(); ++length) {
    ControlTransport cut(std::make_shared<ByteSource>(whole.substr(0, length)));
    EXPECT_THROW((void)cut.read(&byte, 1), TTransportException) << length;
  }
}

TEST(ControlTransport, LargeReadBufferIsGivenBackAfterItsCall) {
  InspectableTransport transport(std::make_shared<FrameSource>(2 * kMebibyte));
  (void)readAll(transport, 2 * kMebibyte);
  EXPECT_EQ(2 * kMebibyte, transport.readBufferSize());
  transport.readEnd();
  EXPECT_EQ(0U, transport.readBufferSize());
}

TEST(ControlTransport, NoReadStartsFromANullPointer) {
  InspectableTransport transport(std::make_shared<FrameSource>(2 * kMebibyte));
  EXPECT_NE(nullptr, transport.readPosition());
  readFrame(transport, 2 * kMebibyte);  // its buffer is given back
  EXPECT_NE(nullptr, transport.readPosition());
  readFrame(transport, 2 * kMebibyte);
}

TEST(ControlTransport, ReadBufferOfOneMebibyteIsKept) {
  InspectableTransport transport(std::make_shared<FrameSource>(kMebibyte));
  readFrame(transport, kMebibyte);
  EXPECT_EQ(kMebibyte, transport.readBufferSize());
}

TEST(ControlTransport, LargeWriteBufferIsGivenBackAfterItsCall) {
  InspectableTransport transport(std::make_shared<ByteSource>(""));
  const std::vector<uint8_t> message(3 * kMebibyte);
  transport.write(message.data(), 3 * kMebibyte);
  transport.writeEnd();
  transport.flush();
  EXPECT_GE(kMebibyte, transport.writeBufferSize());
}

/** A socket that listens to clients of IPv6 and of IPv4 on a port of its own. */
class Listener {
 public:
  Listener() : socket_(socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const int off = 0;
    setsockopt(socket_.getSocketFD(), IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off);
    EXPECT_EQ(0, listen(socket_.getSocketFD(), 1));
  }

  /** What a client that connects to `address`, 127.0.0.1 or ::1, is told to come from, without the
   * port, which is its own. */
  std::string originOf(const std::string& address) {
    TSocket client(address, portOf(socket_));
    client.open();
    const auto accepted =
        std::make_shared<TSocket>(accept(socket_.getSocketFD(), nullptr, nullptr));
    const std::string origin = ControlTransport(accepted).getOrigin();
    const size_t end = origin.rfind(':');
    EXPECT_EQ(std::to_string(portOf(client)), origin.substr(end + 1));
    return origin.substr(0, end);
  }

 private:
  static int portOf(TSocket& socket) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    getsockname(socket.getSocketFD(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(
        reinterpret_cast<const sockaddr_in*>(&address)->sin_port);  // where IPv6 has it, too
  }

  TSocket socket_;
};

TEST(ControlTransport, OriginIsTheAddressAndPortOfTheClient) {
  Listener listener;
  EXPECT_EQ("127.0.0.1", listener.originOf("127.0.0.1"));
  EXPECT_EQ("[::1]", listener.originOf("::1"));
}

TEST(ControlTransport, OriginOfWhatIsNotConnectedIsUnknown) {
  EXPECT_EQ("unknown", ControlTransport(std::make_shared<TSocket>("127.0.0.1", 1)).getOrigin());
  EXPECT_EQ("unknown", ControlTransport(std::make_shared<ByteSource>("")).getOrigin());
}

TEST(ControlTransport, FactoryMakesSuchTransports) {
  const auto made =
      ControlTransportFactory().getTransport(std::make_shared<FrameSource>(kMebibyte * 20));
  const auto transport = std::dynamic_pointer_cast<ControlTransport>(made);
  ASSERT_NE(nullptr, transport);
  readFrame(*transport, kMebibyte * 20);
}

}  // namespace
}  // namespace tevra::test
