#include "tests/system/disk_faults.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <ostream>
#include <tuple>
#include <vector>

namespace tevra::test {
namespace {

using thrift::in_module::EITTableVersionStoreFile;
using thrift::in_module::PIDRemap;
using thrift::in_module::TableStoreFile;

constexpr int32_t kScheduleTable = 0x50;
constexpr int32_t kFirstNewPid = 0x800;  // one more in every round

// What the good files hold.
constexpr int32_t kSavedPat = 30;
constexpr int32_t kSavedSdt = 31;
constexpr int32_t kSavedPmt = 7;
constexpr int32_t kSavedEit = 31;
constexpr int32_t kSavedPidOffset = 50;  // from the PID that a fresh daemon chooses
constexpr int32_t kSavedPidCounter = 180;

constexpr int32_t kFreshPids = 108;  // the last output PID of the first PAT and PMT

PIDRemap goodPids() {
  PIDRemap pids;
  pids.transportStreamId = kTransportStreamId;
  pids.nextPIDCounter = kSavedPidCounter;
  pids.moduleSlot = 3;
  const std::vector<int32_t> inputs = {kNitPid, kTelevisionPmtPid, kRadioPmtPid, kVideoPid,
                                       kEcmPid, kEnglishPid,       kSpanishPid,  kSubtitlesPid};
  int32_t output = kOutNit + kSavedPidOffset;
  for (const int32_t input : inputs) {
    pids.inputToOutput[input] = output;
    pids.outputToInput[output] = input;
    ++output;
  }
  return pids;
}

TableStoreFile goodTables() {
  TableStoreFile file;
  auto& store = file.tableStores[kTelevision];
  store.pat.version = kSavedPat;
  store.sdt.version = kSavedSdt;
  store.pmt.version = kSavedPmt;
  return file;
}

EITTableVersionStoreFile goodVersions() {
  EITTableVersionStoreFile file;
  file.versionStores[kTelevision].versions[kScheduleTable] = kSavedEit;
  return file;
}

}  // namespace

const char* nameOf(StoreFile file) {
  return std::array{"Pids", "Tables", "Versions"}.at(file);
}

std::string relativePath(StoreFile file) {
  return std::array{pidRemapFile(0), tableStoreFile(0), eitVersionFile(0)}.at(file);
}

void DiskFaults::writeGoodFiles() const {
  std::filesystem::create_directories(directory_);
  writeRecord(pathOf(kPids), goodPids());
  writeRecord(pathOf(kTables), goodTables());
  writeRecord(pathOf(kVersions), goodVersions());
}

void DiskFaults::start() {
  daemon_.reset();
  const auto before = std::chrono::steady_clock::now();
  daemon_ = std::make_unique<Daemon>(root_, setup_);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - before;
  EXPECT_LT(taken.count(), static_cast<double>(kPromptStart.count()));
}

Served DiskFaults::serve() {
  Served served;
  const Lines lines = daemon_->linesOf([&] {
    ControlClient client;
    served = callRound(client);
  });
  roundErrors_ = upToLevel(lines, '3');
  served.eit = lastEitVersion();
  return served;
}

Served DiskFaults::callRound(ControlClient& client) {
  ++rounds_;
  PMT pmt = televisionPmt();
  pmt.esList.emplace_back(pmt.esList[0]).pid = kFirstNewPid + rounds_;
  client->setPAT(multiplexPat());
  client->setPMT(pmt);
  client->setSDT(multiplexSdt());
  const SPTSConfiguration output =
      onlyOutput(client, televisionRequest("Uno " + std::to_string(rounds_)));
  client->setTOT(totAt(std::time(nullptr)));
  client->setEITSchedule(mapOf({eit(kTelevision, kScheduleTable, 0)}));
  Served served;
  const auto& tables = output.outputTables.dvbTables;
  served.pat = tables.pat.version;
  served.sdt = tables.sdt.version;
  served.pmt = tables.pmt.version;
  served.videoPid = tables.pmt.pcrPid;
  served.newPid = tables.pmt.esList.back().pid;
  return served;
}

int32_t DiskFaults::lastEitVersion() {
  int32_t version = -1;
  EXPECT_TRUE(eventually([&] {
    int32_t schedules = 0;
    for (const fake::Notification& notification : mainTask_.received()) {
      if (notification.method == "notifyEITSchedule") {
        ++schedules;
        version = notification.eit.version;
      }
    }
    return schedules == rounds_;
  }));
  return version;
}

Lines DiskFaults::loadErrors(StoreFile file) const {
  if (file == kPids) {
    return {};
  }
  return {"3 [MPTS0] Error reading file: " + pathOf(file),
          "3 [MPTS0] Error reading tables from file"};
}

Lines DiskFaults::saveErrors(StoreFile file, bool freshPids) const {
  if (file == kPids) {
    return freshPids ? Lines{kPidsNotSaved, kPidsNotSaved} : Lines{kPidsNotSaved};
  }
  return {"3 [MPTS0] Error writing file: " + pathOf(file),
          file == kTables ? "3 [MPTS0] Error writing tables in file"
                          : "3 [MPTS0] Error writing EIT table version in file"};
}

Lines DiskFaults::noDirectoryErrors() const {
  const std::string noDirectory = "3 [MPTS0] Could not create directory: " + directory_;
  return {noDirectory, saveErrors(kTables)[1], noDirectory, saveErrors(kVersions)[1]};
}

void DiskFaults::expectGoodRound(const Served& expected) {
  EXPECT_EQ(serve(), expected);
  EXPECT_EQ(roundErrors_, Lines());
  expectFilesHold(expected);
}

void DiskFaults::expectFilesHold(const Served& last) const {
  const auto tables = readRecord<TableStoreFile>(pathOf(kTables)).tableStores.at(kTelevision);
  EXPECT_EQ(tables.pat.version, last.pat);
  EXPECT_EQ(tables.sdt.version, last.sdt);
  EXPECT_EQ(tables.pmt.version, last.pmt);
  const auto versions = readRecord<EITTableVersionStoreFile>(pathOf(kVersions));
  EXPECT_EQ(versions.versionStores.at(kTelevision).versions.at(kScheduleTable), last.eit);
  const auto pids = readRecord<PIDRemap>(pathOf(kPids));
  EXPECT_EQ(pids.inputToOutput.at(kVideoPid), last.videoPid);
  EXPECT_EQ(pids.inputToOutput.at(kFirstNewPid + rounds_), last.newPid);
  EXPECT_EQ(pids.outputToInput.at(last.newPid), kFirstNewPid + rounds_);
  EXPECT_EQ(pids.nextPIDCounter + 1, last.newPid);
}

Served expectedAfter(const std::array<bool, 3>& lost, int32_t round) {
  constexpr int32_t kCount = 32;
  Served served;
  served.pat = lost[kTables] ? 1 : (kSavedPat + 1) % kCount;  // the same in every round
  served.sdt = lost[kTables] ? round : (kSavedSdt + round) % kCount;
  served.pmt = lost[kTables] ? round : (kSavedPmt + round) % kCount;
  served.eit = lost[kVersions] ? round : (kSavedEit + round) % kCount;
  served.videoPid = lost[kPids] ? kOutVideo : kOutVideo + kSavedPidOffset;
  served.newPid = (lost[kPids] ? kFreshPids : kSavedPidCounter + 1) + round;
  return served;
}

Served expectedWithout(StoreFile lost, int32_t round) {
  std::array<bool, 3> all = {};
  all.at(lost) = true;
  return expectedAfter(all, round);
}

Lines together(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

bool operator==(const Served& a, const Served& b) {
  const auto fields = [](const Served& served) {
    return std::tie(served.pat, served.sdt, served.pmt, served.eit, served.videoPid, served.newPid);
  };
  return fields(a) == fields(b);
}

void PrintTo(const Served& served, std::ostream* out) {
  *out << "PAT " << served.pat << ", SDT " << served.sdt << ", PMT " << served.pmt << ", EIT "
       << served.eit << ", video PID " << served.videoPid << ", new PID " << served.newPid;
}

}  // namespace tevra::test
