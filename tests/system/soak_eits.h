#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <set>
#include <vector>

#include "in_module_types.h"

namespace tevra::test {

/** What becomes of EITs: which the daemon must pass on, with which versions and in what time. */
class SoakEits {
 public:
  using EIT = thrift::dvb_tables::EIT;
  using EITMap = thrift::in_module::EITMap;

  /** EITs as they were given, but for the version, which is the one handed out. */
  using Restamped = std::vector<EIT>;

  enum Kind { kPresentFollowing, kSchedule };

  [[nodiscard]] Restamped set(Kind kind, const EITMap& eits);

  struct Both {
    Restamped presentFollowing;
    Restamped schedule;
  };

  /** `earliest`, `latest`: when the daemon may have looked at its clock. */
  [[nodiscard]] Both setTot(std::time_t utc, std::time_t earliest, std::time_t latest);

  /** True when `notified` is `restamped` moved by the difference between the broadcast clock and
   * the daemon's. That is known to a second or two at first, and exactly from the first event on.
   */
  [[nodiscard]] bool isMoved(const EIT& restamped, const EIT& notified);

  /** The reset command. */
  void reset();

  /** Ages what is in the file; all else is forgotten. */
  void restart();

  [[nodiscard]] int64_t offsetChanges() const { return offsetChanges_; }

 private:
  struct Versions {
    int32_t restarts = 0;
    std::map<int32_t, int32_t> ofTables;
  };

  [[nodiscard]] Restamped restamp(const EITMap& eits);

  std::map<int32_t, Versions> versions_;
  std::map<int32_t, Versions> file_;
  std::map<Kind, EITMap> stored_;
  std::set<int64_t> offsets_ = {0};  ///< those that it may be, in seconds
  bool hasTot_ = false;
  int64_t offsetChanges_ = 0;
};

}  // namespace tevra::test
