#include "tools/status/kept_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "platform/configuration_root.h"
#include "platform/module_utils.h"
#include "records/records.h"
#include "store/record_file.h"
#include "store/table_store_files.h"
#include "tools/descriptors/descriptor_values.h"

namespace tevra::tools {
namespace {

constexpr int32_t kTablePat = 0x00;
constexpr int32_t kTablePmt = 0x02;
constexpr int32_t kTableSdt = 0x42;

/** A file system keeps later times than the clock can say, and nobody saved before its first. */
std::chrono::system_clock::time_point timeOf(time_t seconds) {
  using Clock = std::chrono::system_clock;
  const time_t last =
      std::chrono::duration_cast<std::chrono::seconds>(Clock::duration::max()).count();
  return Clock::from_time_t(std::clamp<time_t>(seconds, 0, last));
}

template <class Record>
Record readFile(const std::string& root, const std::string& name, KeptState& state) {
  KeptFile& file = state.files.emplace_back();
  file.name = name;
  const std::string path = root + "/" + name;
  Record record;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    file.state = FileState::kAbsent;
    if (errno != ENOENT) {
      file.state = FileState::kUnreadable;
      file.isForbidden = errno == EACCES;
      file.reason = std::string("cannot open: ") + std::strerror(errno);
    }
    return record;
  }
  file.saved = timeOf(status.st_mtime);
  const RecordFileResult result = readRecordFromFile(path, record, &file.reason);
  if (result != kRecordFileDone) {
    file.isForbidden = faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0 && errno == EACCES;
    file.state = result == kRecordFileNotOpened ? FileState::kUnreadable : FileState::kDamaged;
  }
  return record;
}

int64_t startsLeft(int32_t restartCounter) {
  return std::max<int64_t>(0, int64_t{kMaxRestartCounter} + 1 - restartCounter);
}

void take(const TableStoreFile& file, KeptState& state) {
  for (const auto& [service, store] : file.tableStores) {
    KeptService& kept = state.services[service];
    kept.tables = KeptVersions{{{kTablePat, store.pat.version},
                                {kTableSdt, store.sdt.version},
                                {kTablePmt, store.pmt.version}},
                               startsLeft(store.restartCounter)};
    kept.outputSid = store.pmt.programNumber;
    if (!store.sdt.services.empty()) {
      kept.name = serviceNames(store.sdt.services.front().descriptors).name;
    }
  }
}

void take(const EITTableVersionStoreFile& file, KeptState& state) {
  for (const auto& [service, store] : file.versionStores) {
    state.services[service].eits = KeptVersions{store.versions, startsLeft(store.restartCounter)};
  }
}

KeptPids pidsOf(const PIDRemap& map, int set, int moduleType) {
  KeptPids pids;
  pids.transportStreamId = map.transportStreamId;
  pids.slot = map.moduleSlot;
  pids.used = map.outputToInput.size();
  pids.pool = pidPoolOf(map.moduleSlot, set, moduleType);
  if (!map.outputToInput.empty()) {
    pids.highest = map.outputToInput.rbegin()->first;
    if (pids.pool && map.outputToInput.begin()->first != pids.pool->first + 1) {
      pids.pool.reset();  // the module has another type
    }
  }
  return pids;
}

}  // namespace

std::string usualRoot() {
  const std::string package = "/var/lib/tornel";
  std::error_code ignored;  // who may not look at it cannot look into it either
  const bool isThere = exists(std::filesystem::symlink_status(package, ignored));
  return isThere ? package : configurationRoot();
}

int moduleTypeHere() {
  int id = 0;
  return get_module_id(&id);
}

std::optional<PidPool> pidPoolOf(int32_t slot, int set, int moduleType) {
  constexpr int64_t kPidsPerSlot = 800;
  constexpr int64_t kFirstInputSlot = 3;
  constexpr int64_t kFirstPoolPid = 100;
  const bool isFour = moduleType == kModuleTypeFourMpts;
  if (!isFour && moduleType != kModuleTypeTwoMptsA && moduleType != kModuleTypeTwoMptsB) {
    return std::nullopt;
  }
  const int64_t size = isFour ? 200 : 400;
  const int64_t first = kPidsPerSlot * (slot - kFirstInputSlot) + kFirstPoolPid + set * size;
  return PidPool{first, first + size - 1};
}

bool KeptState::any() const {
  return std::any_of(files.begin(), files.end(),
                     [](const KeptFile& file) { return file.saved.has_value(); });
}

KeptState readKeptState(const std::string& root, int set, int moduleType) {
  const std::string index = std::to_string(set);
  KeptState state;
  const auto map = readFile<PIDRemap>(root, "PIDRemap" + index, state);
  if (state.files.back().state == FileState::kRead) {
    state.pids = pidsOf(map, set, moduleType);
  }
  take(readFile<TableStoreFile>(root, "Tornel/TableStoreFile" + index, state), state);
  take(readFile<EITTableVersionStoreFile>(root, "Tornel/EITTableVersionStoreFile" + index, state),
       state);
  return state;
}

}  // namespace tevra::tools
