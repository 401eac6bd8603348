#pragma once

#include <chrono>

#include "tools/status/set_status.h"

/** What a multiplex may be found to be. */
namespace tevra::tools::test {

inline const std::chrono::system_clock::time_point kSaved =
    std::chrono::system_clock::from_time_t(1'700'000'000);

/** Nothing is wrong with it. */
inline SetStatus healthy(int set = 0) {
  SetStatus status;
  status.set = set;
  status.daemon = {"127.0.0.1:9224", 0.0004125, "", true};
  status.mainTaskAddress = "127.0.0.1:9256";
  status.mainTaskListens = true;
  status.root = "/conf";
  status.kept.files = {{"PIDRemap0", FileState::kRead, "", kSaved},
                       {"Tornel/TableStoreFile0", FileState::kRead, "", kSaved},
                       {"Tornel/EITTableVersionStoreFile0", FileState::kAbsent, "", {}}};
  status.kept.pids = KeptPids{7, 3, 3, 103, PidPool{100, 299}};
  KeptService& service = status.kept.services[101];
  service.tables = KeptVersions{{{0x00, 1}, {0x42, 2}, {0x02, 3}}, 4};
  service.outputSid = 1201;
  service.name = "Uno \"HD\"\n";
  status.kept.services[-1].eits = KeptVersions{{{-2, 5}, {0x4E, 9}}, 2};
  return status;
}

/** As much as can be wrong at once. */
inline SetStatus broken() {
  SetStatus status = healthy();
  status.daemon = {"127.0.0.1:9224", std::nullopt, "no daemon answers", true};
  status.mainTaskListens = false;
  status.kept.files[0] = {
      "PIDRemap0", FileState::kUnreadable, "cannot open: Not allowed", {}, true};
  status.kept.files[1] = {"Tornel/TableStoreFile0", FileState::kDamaged, "cut\nshort", kSaved};
  status.kept.pids->highest = 300;
  return status;
}

}  // namespace tevra::tools::test
