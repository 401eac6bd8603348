#pragma once

#include <cstdint>
#include <memory>

#include <thrift/transport/TSocket.h>

#include "im_SIControlSrv.h"

namespace tevra::test {

inline constexpr int kFirstControlPort = 9224;
inline constexpr int kFirstNotificationPort = 9256;

/**
 * A client of the control service, connected from construction to destruction. An answer that does
 * not come within kPatience raises an exception.
 */
class ControlClient {
 public:
  using Service = thrift::in_module::im_SIControlSrvClient;

  explicit ControlClient(int32_t mptsIndex = 0);
  ~ControlClient();
  ControlClient(const ControlClient&) = delete;
  ControlClient& operator=(const ControlClient&) = delete;

  Service* operator->() { return service_.get(); }
  Service& operator*() { return *service_; }

  /** Whether bytes of an answer arrive within `milliseconds`. */
  [[nodiscard]] bool hasAnswerWithin(int milliseconds);

  /** Before its end. */
  void close() { transport_->close(); }

 private:
  std::shared_ptr<apache::thrift::transport::TSocket> socket_;
  std::shared_ptr<apache::thrift::transport::TTransport> transport_;
  std::unique_ptr<Service> service_;
};

}  // namespace tevra::test
