#pragma once

#include <cstdint>
#include <optional>

namespace tevra::tools {

/**
 * The rule by which an output repeats its tables: PAT and PMT at least every 100 ms, the SDT every
 * second, and all of them first of all. Where packets with a PCR are close enough the tables stand
 * before one, so that a meter that knows the PCRs alone finds the same.
 */
class TableRepetition {
 public:
  /** Which tables go out before a packet. */
  struct Due {
    bool patAndPmt;  ///< both, in this order
    bool sdt;        ///< behind them
  };

  /**
   * Before the next packet, which is at `time`; what is due has gone out then. `horizon` is when
   * the next packet with a PCR comes if this one has one, else `time`. Both in 27 MHz ticks.
   */
  [[nodiscard]] Due before(int64_t time, int64_t horizon);

  /** All of them are due before the next packet. */
  void restart() { *this = TableRepetition(); }

 private:
  std::optional<int64_t> patAndPmt_;  // when they went out
  std::optional<int64_t> sdt_;
};

}  // namespace tevra::tools
