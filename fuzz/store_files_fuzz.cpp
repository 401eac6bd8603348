// Files of any content where those that survive a restart should lie: the start takes what it can,
// and the next saves repair them.

#include <fstream>
#include <string>

#include <thrift/protocol/TJSONProtocol.h>

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/isolation.h"
#include "fuzz/owned_handler.h"
#include "fuzz/target.h"
#include "records/record_file_access.h"
#include "store/record_file.h"
#include "store/table_store_files.h"

namespace tevra::fuzz {
namespace {

constexpr int32_t kProgramme = 1;
constexpr int32_t kGlobalSid = 7;

std::string pidRemapPath() {
  return configurationRoot() + "/PIDRemap0";
}
std::string tableStorePath() {
  return configurationRoot() + "/Tornel/TableStoreFile0";
}
std::string eitVersionPath() {
  return configurationRoot() + "/Tornel/EITTableVersionStoreFile0";
}

/** The first byte says in place of which file; all three for the others. */
void placeFiles(const uint8_t* bytes, size_t size) {
  const int kind = size == 0 ? 0 : bytes[0] % 4;
  const std::string content(reinterpret_cast<const char*>(bytes) + (size == 0 ? 0 : 1),
                            size == 0 ? 0 : size - 1);
  const std::string paths[] = {pidRemapPath(), tableStorePath(), eitVersionPath()};
  for (int file = 0; file < 3; ++file) {
    if (kind == file || kind == 3) {
      std::ofstream(paths[file], std::ios::binary) << content;
    }
  }
}

void useTables(SIControlSrvHandler& handler) {
  PAT pat;
  pat.transportStreamId = 1;
  pat.programs.emplace_back();
  pat.programs[0].programNumber = kProgramme;
  pat.programs[0].pid = 0x100;
  handler.setPAT(pat);
  PMT pmt;
  pmt.programNumber = kProgramme;
  pmt.pcrPid = 0x101;
  handler.setPMT(pmt);
  TOT tot;
  tot.utcTime = int64_t{61041} << 24;
  handler.setTOT(tot);
  EITMap eits;
  eits[kProgramme][0x50].serviceId = kProgramme;
  handler.setEITSchedule(eits);
}

TableStore requestTables(SIControlSrvHandler& handler) {
  SrvOutputRequest request;
  request.inputSID = kProgramme;
  request.outputs[0].globalSID = kGlobalSid;
  std::map<int32_t, SPTSConfiguration> answer;
  handler.getSrvOutputData(answer, request);
  TORNEL_FUZZ_CHECK(answer.size() == 1);
  TableStore handedOut;
  handedOut.pat = answer[kGlobalSid].outputTables.dvbTables.pat;
  handedOut.sdt = answer[kGlobalSid].outputTables.dvbTables.sdt;
  handedOut.pmt = answer[kGlobalSid].outputTables.dvbTables.pmt;
  return handedOut;
}

/** The two store files hold what was handed out. */
void checkSaved(const TableStore& handedOut) {
  TableStoreFile tables;
  TORNEL_FUZZ_CHECK(readRecordFromFile(tableStorePath(), tables) == kRecordFileDone);
  const TableStore& saved = tables.tableStores.at(kProgramme);
  TORNEL_FUZZ_CHECK(saved.pat.version == handedOut.pat.version);
  TORNEL_FUZZ_CHECK(saved.sdt.version == handedOut.sdt.version);
  TORNEL_FUZZ_CHECK(saved.pmt.version == handedOut.pmt.version);
  EITTableVersionStoreFile versions;
  TORNEL_FUZZ_CHECK(readRecordFromFile(eitVersionPath(), versions) == kRecordFileDone);
  TORNEL_FUZZ_CHECK(versions.versionStores.at(kProgramme).restartCounter == 0);
}

/** Thrift's own protocol reads the same; of doubles, which no record has, it refuses more. */
template <class Record>
void checkAgainstLibrary(const std::string& path, const Record& record) {
  apache::thrift::protocol::TJSONProtocol protocol(readRecordFile(*openRecordFile(path)));
  Record librarys;
  try {
    librarys.read(&protocol);
  } catch (const apache::thrift::protocol::TProtocolException&) {
    return;
  }
  TORNEL_FUZZ_CHECK(librarys == record);
}

/** What was read once is read again after being written. */
template <class Record>
void checkRoundTrip(const std::string& path) {
  Record record;
  if (readRecordFromFile(path, record) != kRecordFileDone) {
    return;
  }
  checkAgainstLibrary(path, record);
  TORNEL_FUZZ_CHECK(writeRecordToFile(path, storedEntries(record)) == kRecordFileDone);
  Record again;
  TORNEL_FUZZ_CHECK(readRecordFromFile(path, again) == kRecordFileDone && again == record);
}

}  // namespace
}  // namespace tevra::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace tevra::fuzz;  // NOLINT(google-build-using-namespace): the target itself
  emptyConfigurationRoot();
  // Makes the directory.
  (void)tevra::saveTableStoreFile(tevra::StoredTablesMap(), 0);
  (void)tevra::saveEITTableVersionStoreFile(tevra::StoredEITVersionsMap(), 0);
  placeFiles(bytes, size);
  checkRoundTrip<tevra::TableStoreFile>(tableStorePath());
  checkRoundTrip<tevra::EITTableVersionStoreFile>(eitVersionPath());
  {
    OwnedHandler handler;
    useTables(handler);
    checkSaved(requestTables(handler));
  }
  tevra::PIDRemap pids;  // unless every PID was known, it has been written
  (void)tevra::readRecordFromFile(pidRemapPath(), pids);
  OwnedHandler restarted;
  useTables(restarted);
  checkSaved(requestTables(restarted));
  return 0;
}
