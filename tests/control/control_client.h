#pragma once

#include <memory>
#include <string>

#include <thrift/transport/TSocket.h>

#include "im_SIControlSrv.h"
#include "tests/fakes/fake_platform.h"

namespace tevra::test {

inline constexpr int kFirstControlPort = 9224;

/** A control client of its own connection, as other processes of the device are. */
class ControlClient {
 public:
  /** Connects at once. */
  explicit ControlClient(int port = kFirstControlPort);

  thrift::in_module::im_SIControlSrvClient* operator->() { return client_.get(); }

  /** True when bytes of an answer arrive within `milliseconds`. */
  [[nodiscard]] bool hasAnswerWithin(int milliseconds);

  void close() { transport_->close(); }

 private:
  std::shared_ptr<apache::thrift::transport::TSocket> socket_;
  std::shared_ptr<apache::thrift::transport::TTransport> transport_;
  std::unique_ptr<thrift::in_module::im_SIControlSrvClient> client_;
};

/** A connection for bytes that are no call. */
class RawConnection {
 public:
  explicit RawConnection(int port = kFirstControlPort);

  void send(const std::string& bytes);

  /** `length` bytes; throws when they do not come within 5 s. */
  [[nodiscard]] std::string receive(size_t length);

  /** True when the server closes the connection within 5 s without having sent anything. */
  [[nodiscard]] bool isClosedByServer();

 private:
  apache::thrift::transport::TSocket socket_;
};

/** Waits up to 5 s for a line of `level` that begins with `beginning`. */
[[nodiscard]] bool waitForLine(int level, const std::string& beginning);

/** Fixture: the control server of MPTS 0, which is started once per process, as nothing stops it.
 */
class ControlServerTest : public fake::PlatformTest {
 protected:
  ControlServerTest();
};

}  // namespace tevra::test
