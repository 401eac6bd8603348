#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "records/records.h"

namespace tevra::bench {

/**
 * The three tables of one output made by libdvbpsi with nothing around it: handle, init, add,
 * sections, packets. Nothing built on the library can take less.
 *
 * Descriptor loops are appended to as the library offers it, from their head.
 */
class BareSynthesis {
 public:
  /** Puts the tables together from the same records as the daemon. */
  BareSynthesis(PMT pmt, SDT sdt) : pmt_(std::move(pmt)), sdt_(std::move(sdt)) {}

  /** Appends the packets. */
  void run();

  [[nodiscard]] const std::vector<std::string>& packets() const { return packets_; }
  void forget() { packets_ = {}; }

 private:
  void makePat();
  void makeSdt();
  void makePmt();

  PMT pmt_;
  SDT sdt_;
  std::vector<std::string> packets_;
};

}  // namespace tevra::bench
