#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tevra {

/**
 * The packets last made of a stored table. They are a function of its content, of version and
 * current/next flag, and of the PID that carries it: whoever replaces the content replaces them.
 */
class KeptPackets {
 public:
  /** None. */
  KeptPackets() = default;

  /** `packets`, made of the table in this version, with this flag and for this PID. */
  KeptPackets(std::vector<std::string> packets, int32_t version, bool currentNext, int32_t pid)
      : packets_(std::move(packets)), version_(version), currentNext_(currentNext), pid_(pid) {}

  /** Whether there are any, and such as these. */
  [[nodiscard]] bool areOf(int32_t version, bool currentNext, int32_t pid) const;

  /** All of them; empty when there are none. */
  [[nodiscard]] const std::vector<std::string>& packets() const { return packets_; }

 private:
  std::vector<std::string> packets_;
  int32_t version_ = 0;
  bool currentNext_ = false;
  int32_t pid_ = 0;
};

}  // namespace tevra
