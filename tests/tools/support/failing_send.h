#pragma once

namespace tevra::tools::test {

/** While it is there, no datagram of this process is sent to an address: sendto fails. */
class FailingSend {
 public:
  explicit FailingSend(int error);  ///< for errno
  ~FailingSend();
  FailingSend(const FailingSend&) = delete;
  FailingSend& operator=(const FailingSend&) = delete;
};

}  // namespace tevra::tools::test
