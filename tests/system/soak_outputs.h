#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "in_module_types.h"
#include "tests/system/soak_pids.h"

namespace tevra::test {

/** The tables of the multiplex with output PIDs. */
struct SoakTables {
  std::optional<thrift::dvb_tables::PAT> pat;
  std::optional<thrift::dvb_tables::SDT> sdt;
  std::optional<thrift::dvb_tables::CAT> cat;
  std::map<int32_t, thrift::dvb_tables::PMT> pmts;  ///< by programme number
};

/** How often each way to an answer was taken: a run that misses one has shown little. */
struct SoakTally {
  int64_t empty = 0;      ///< answers without an output
  int64_t direct = 0;     ///< outputs by an entry of their own id
  int64_t listed = 0;     ///< outputs of others' ids
  int64_t fallback = 0;   ///< outputs by no entry
  int64_t withEmm = 0;    ///< outputs with the PIDs of a CAT
  int64_t filtered = 0;   ///< outputs that lost an audio stream
  int64_t unmapped = 0;   ///< PIDs that no input PID belongs to
  int64_t moved = 0;      ///< tables with a new version
  int64_t kept = 0;       ///< tables with the version they had
  int64_t wrapped = 0;    ///< versions after 31
  int64_t forgotten = 0;  ///< services too old at a restart
};

/** Answers as the daemon must give them: PIDs, records, packets and, above all, versions. */
class SoakOutputs {
 public:
  using Answer = std::map<int32_t, thrift::common_fpga::SPTSConfiguration>;

  /** `pids` are asked, and saved where the daemon saves them. */
  [[nodiscard]] Answer answerTo(const thrift::in_module::SrvOutputRequest& request,
                                const SoakTables& tables, SoakPids& pids);

  /** Every answer is in the file: it is aged, nothing else happens. */
  void restart();

  [[nodiscard]] const SoakTally& tally() const { return tally_; }

 private:
  struct Work;
  struct Built;

  void serve(Answer& answer, const thrift::in_module::OutputServiceDescription& output, Work& work);
  void serveFromList(Answer& answer, const thrift::in_module::OutputServiceDescription& output,
                     const std::vector<thrift::spts::LastNodeSettings>& list, Work& work);
  [[nodiscard]] thrift::common_fpga::SPTSConfiguration build(const Built& built, const Work& work);
  void synthesise(thrift::common_fpga::SPTSConfiguration& output, const Built& built,
                  const Work& work, thrift::dvb_tables::PMT filtered);

  /** The version of a table that had `version` before. */
  [[nodiscard]] int32_t versionAfter(int32_t version, bool changed);

  std::map<int32_t, thrift::in_module::TableStore> stores_;
  std::map<int32_t, thrift::in_module::TableStore> file_;
  SoakTally tally_;
};

/** A service name of a request, and how it stands in a service descriptor. */
struct SoakName {
  std::string utf8;
  std::optional<std::string> dvb;  ///< nothing when it is no UTF-8
};

/** The names that requests may have. */
[[nodiscard]] const std::vector<SoakName>& soakNames();

}  // namespace tevra::test
