#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "in_module_types.h"

namespace tevra::test {

/** Which PIDs the daemon must hand out: the first MPTS of the default module. */
class SoakPids {
 public:
  /** A PAT has this transport stream id: another one than before forgets every PID. */
  void follow(int32_t transportStreamId);

  /** A PID without an output PID gets the next one. */
  [[nodiscard]] int32_t outputOf(int32_t inputPid);

  /** 65535 when there is none. */
  [[nodiscard]] int32_t inputOf(int32_t outputPid) const;

  /** As they are stored and notified, CA descriptors with output PIDs. */
  [[nodiscard]] std::vector<thrift::dvb_tables::Descriptor> rewritten(
      const std::vector<thrift::dvb_tables::Descriptor>& descriptors);

  [[nodiscard]] thrift::dvb_tables::PAT rewritten(const thrift::dvb_tables::PAT& pat);
  [[nodiscard]] thrift::dvb_tables::PMT rewritten(const thrift::dvb_tables::PMT& pmt);
  [[nodiscard]] thrift::dvb_tables::CAT rewritten(const thrift::dvb_tables::CAT& cat);

  /** To the file, if a PID was handed out since the last time. */
  void save();

  /** What is not in the file is forgotten. */
  void restart();

  /** How often a new transport stream began all over again. */
  [[nodiscard]] int64_t resets() const { return resets_; }

 private:
  static constexpr int32_t kFirst = 101;

  struct Mapping {
    int32_t transportStreamId = 0xFFFF;
    int32_t next = kFirst;
    std::map<int32_t, int32_t> outputs;
    std::map<int32_t, int32_t> inputs;
  };

  Mapping mapping_;
  Mapping file_;
  bool unsaved_ = false;
  int64_t resets_ = 0;
};

inline constexpr int32_t kCaTag = 0x09;

/** The PID of a CA descriptor's payload; nothing when that is too short for one. */
[[nodiscard]] std::optional<int32_t> caPidOf(const thrift::dvb_tables::Descriptor& descriptor);

}  // namespace tevra::test
