#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>
#include <thrift/TApplicationException.h>
#include <thrift/protocol/TJSONProtocol.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "control/control_processor.h"
#include "control/control_transport.h"
#include "control/si_control_handler.h"
#include "records/dvbpsi.h"
#include "records/frame_protocol.h"
#include "records/global_output.h"
#include "tests/control/tables.h"
#include "tests/fakes/fake_main_task.h"
#include "tests/platform/system_clock.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/emulation.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/files.h"
#include "tests/support/sync_recorder.h"
#include "tests/support/tables.h"
#include "tests/system/record_files.h"

// Every allocation fails, one a run: of each call, from the bytes of the request to those of the
// answer, and of the start.

namespace {

bool saveFailed = false;  // and was logged

void take(const char* format, va_list arguments) {
  std::array<char, 256> line{};  // not on the heap
  (void)std::vsnprintf(line.data(), line.size(), format, arguments);
  saveFailed = saveFailed || std::strstr(line.data(), "Error writing") != nullptr;
}

}  // namespace

// The generators of SDT and PMT sections do not look whether they get the memory for one. They are
// called when it has just been there (records/dvbpsi.h), so that it is here, too.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

dvbpsi_psi_section_t* __real_dvbpsi_sdt_sections_generate(dvbpsi_t* handle, dvbpsi_sdt_t* sdt);
dvbpsi_psi_section_t* __wrap_dvbpsi_sdt_sections_generate(dvbpsi_t* handle, dvbpsi_sdt_t* sdt) {
  const tevra::test::SparedAllocations spared;
  return __real_dvbpsi_sdt_sections_generate(handle, sdt);
}

dvbpsi_psi_section_t* __real_dvbpsi_pmt_sections_generate(dvbpsi_t* handle, dvbpsi_pmt_t* pmt);
dvbpsi_psi_section_t* __wrap_dvbpsi_pmt_sections_generate(dvbpsi_t* handle, dvbpsi_pmt_t* pmt) {
  const tevra::test::SparedAllocations spared;
  return __real_dvbpsi_pmt_sections_generate(handle, pmt);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

// Takes the lines from the machine's own log.
extern "C" {

void openlog(const char* /*name*/, int /*options*/, int /*facility*/) {}

void syslog(int /*priority*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  take(format, arguments);
  va_end(arguments);
}

// What _FORTIFY_SOURCE calls.
void __syslog_chk(int /*priority*/, int /*flag*/,  // NOLINT(bugprone-reserved-identifier)
                  const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  take(format, arguments);
  va_end(arguments);
}

}  // extern "C"

namespace tevra::test {
namespace {

using apache::thrift::TApplicationException;
using apache::thrift::TException;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TMemoryBuffer;
using Client = thrift::in_module::im_SIControlSrvClient;

constexpr int kEvery = kEmulated ? 7 : 1;  // where each takes ten times as long

/** The halves of a call whose contents differ from what prepare() has given. */
struct Call {
  const char* name;
  void (*send)(Client&);
  void (*receive)(Client&);
};

constexpr uint64_t kDay = 60000;  // on which the clock stands still, at noon
constexpr int64_t kNoon = (kDay - 40587) * 86400 + 43200;

EITMap eitsOf(int32_t tableId, int32_t version) {
  return mapOf({makeEit(1, tableId, version, {dvbTime(kDay, 12, 0, 0)}),
                makeEit(version, tableId, version, {dvbTime(kDay, 13, 0, 0)})});
}

PMT englishPmt(int32_t programNumber, int32_t firstPid) {
  PMT pmt = pmtOf(programNumber, firstPid);
  pmt.descriptors = {makeCaDescriptor(0x500, 0x1FE, "private")};
  pmt.esList[1].descriptors = {makeDescriptor(0x0A, std::string("eng\0", 4))};
  return pmt;
}

SrvOutputRequest englishOutputOf(int32_t service, const std::string& name) {
  SrvOutputRequest request = outputOf(service, name);
  LastNodeSettings& node = request.lastNodeSettings[kGlobalSID][0];
  node.audioFilter = 1;
  node.audioLanguages.emplace_back().language = "eng";
  return request;
}

template <class Table>
Table withVersion(int32_t version) {
  Table table;
  table.version = version;
  table.descriptors = {makeDescriptor(0x40, std::string(100, 'n'))};
  return table;
}

SIService longName() {
  SIService data;
  data.name = std::string(100, 'n');
  return data;
}

const Call kCalls[] = {
    {"getSIData", [](Client& client) { client.send_getSIData(); },
     [](Client& client) {
       SIService data;
       client.recv_getSIData(data);
     }},
    {"SISetData", [](Client& client) { client.send_SISetData(longName()); },
     [](Client& client) { client.recv_SISetData(); }},
    {"sendCmd", [](Client& client) { client.send_sendCmd(0); },
     [](Client& client) { client.recv_sendCmd(); }},
    {"setPAT",
     [](Client& client) {
       client.send_setPAT(patOf({0x100, 0x200, 0x300}));
     },
     [](Client& client) { client.recv_setPAT(); }},
    {"setSDT", [](Client& client) { client.send_setSDT(sdtOf(2)); },
     [](Client& client) { client.recv_setSDT(); }},
    {"setPMT", [](Client& client) { client.send_setPMT(englishPmt(1, 0x111)); },
     [](Client& client) { client.recv_setPMT(); }},
    {"setNIT", [](Client& client) { client.send_setNIT(withVersion<NIT>(2)); },
     [](Client& client) { client.recv_setNIT(); }},
    {"setTOT", [](Client& client) { client.send_setTOT(makeTot(dvbTime(kDay, 14, 0, 0))); },
     [](Client& client) { client.recv_setTOT(); }},
    {"setBAT", [](Client& client) { client.send_setBAT(withVersion<BAT>(2)); },
     [](Client& client) { client.recv_setBAT(); }},
    {"setCAT",
     [](Client& client) { client.send_setCAT(makeCat({makeCaDescriptor(0x500, 0x1F1)})); },
     [](Client& client) { client.recv_setCAT(); }},
    {"setEITPresentFollowing",
     [](Client& client) { client.send_setEITPresentFollowing(eitsOf(0x4E, 3)); },
     [](Client& client) { client.recv_setEITPresentFollowing(); }},
    {"setEITSchedule", [](Client& client) { client.send_setEITSchedule(eitsOf(0x50, 3)); },
     [](Client& client) { client.recv_setEITSchedule(); }},
    {"getSrvOutputData",
     [](Client& client) { client.send_getSrvOutputData(englishOutputOf(1, "Another name")); },
     [](Client& client) {
       std::map<int32_t, SPTSConfiguration> answer;
       client.recv_getSrvOutputData(answer);
     }},
};

void PrintTo(const Call& call, std::ostream* out) {
  *out << call.name;
}

/** A handler whose tables can be seen, and which ends with its databases. */
class SeenHandler : public SIControlSrvHandler {
 public:
  SeenHandler() : SIControlSrvHandler(0) {}
  ~SeenHandler() override { delete conflictFreeDatabase(); }
  using SIControlSrvHandler::conflictFreeDatabase;
};

/** What a handler holds, by name. */
using State = std::map<std::string, std::string>;

template <class Record>
std::string textOf(const Record& record) {
  const auto buffer = std::make_shared<TMemoryBuffer>();
  apache::thrift::protocol::TJSONProtocol protocol(buffer);
  record.write(&protocol);
  return buffer->getBufferAsString();
}

const TemporaryDirectory& root() {
  static const TemporaryDirectory directory;
  return directory;
}

/** The three files. */
class Starved : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    setenv("TEVRA_CONF_ROOT", root().path().c_str(), 1);
    globalOutput().setOutputFunction([](const char*) {});
  }

  static std::vector<std::string> paths() {
    return {root() / "PIDRemap0", root() / "Tornel/TableStoreFile0",
            root() / "Tornel/EITTableVersionStoreFile0"};
  }
  static State files() {
    State texts;
    for (const std::string& path : paths()) {
      texts[path] = readText(path);
    }
    return texts;
  }

  Starved() {
    std::filesystem::remove_all(root() / "Tornel");
    std::filesystem::create_directory(root() / "Tornel");
    std::filesystem::remove(root() / "PIDRemap0");
    prepare();
    saved_ = files();
  }

  /** A handler that starts from saved_ and gets the tables of two services. */
  void prepare() {
    restoreFiles();
    handler_ = std::make_shared<SeenHandler>();
    giveTables();
  }
  void restoreFiles() const {
    for (const auto& [path, text] : saved_) {
      writeText(path, text);
    }
  }
  void giveTables() const {
    handler_->setTOT(makeTot(dvbTime(kDay, 12, 0, 0)));
    handler_->setPAT(patOf({0x100, 0x200}));
    handler_->setSDT(sdtOf(1));
    handler_->setCAT(makeCat({makeCaDescriptor(0x500, 0x1F0)}));
    handler_->setPMT(englishPmt(1, 0x101));
    handler_->setPMT(pmtOf(2, 0x201));
    handler_->setEITPresentFollowing(eitsOf(0x4E, 2));
    handler_->setEITSchedule(eitsOf(0x50, 2));
    request(1);
    request(2);
  }
  void request(int32_t service) const {
    std::map<int32_t, SPTSConfiguration> answer;
    handler_->getSrvOutputData(answer, englishOutputOf(service, "Name"));
  }

  static void addVersions(State& state);
  State stateNow() const;
  std::vector<fake::Notification> notifications();

  const StoppedClock clock_{kNoon};
  fake::FakeMainTask mainTask_;
  State saved_;
  std::shared_ptr<SeenHandler> handler_;
};

/** Each EIT version moves by itself, and a service may have none yet. */
void Starved::addVersions(State& state) {
  const std::string path = paths()[2];
  auto saved = readRecord<EITTableVersionStoreFile>(path);
  state.erase(path);
  for (const int32_t service : {1, 2, 3}) {
    for (const int32_t table : {0x4E, 0x50}) {
      state["version of EIT " + std::to_string(table) + " of service " + std::to_string(service)] =
          std::to_string(saved.versionStores[service].versions[table]);
    }
  }
}

/** Also what the table store holds of service 1: an output of the other one makes it save that. */
State Starved::stateNow() const {
  State state = files();
  addVersions(state);
  ConflictFreeDB& database = *handler_->conflictFreeDatabase();
  const auto add = [&](const std::string& name, auto table, auto get) {
    state[name] = get(table) ? textOf(table) : "none";
  };
  add("PAT", PAT(), [&](PAT& out) { return database.getConflictFreePAT(out); });
  add("SDT", SDT(), [&](SDT& out) { return database.getConflictFreeSDT(out); });
  add("CAT", CAT(), [&](CAT& out) { return database.getConflictFreeCAT(out); });
  for (const int32_t service : {1, 2, 3}) {
    const std::string ofService = " of service " + std::to_string(service);
    add("PMT" + ofService, PMT(),
        [&](PMT& out) { return database.getConflictFreePMT(out, service); });
    add("EIT pf" + ofService, EIT(),
        [&](EIT& out) { return database.getRestampedEITpf(out, service, 0x4E); });
    add("EIT sch" + ofService, EIT(),
        [&](EIT& out) { return database.getRestampedEITsch(out, service, 0x50); });
  }
  for (int32_t pid = 101; pid < 130; ++pid) {
    state["input of PID " + std::to_string(pid)] = std::to_string(database.getInputPID(pid));
  }
  request(2);
  auto stores = readRecord<TableStoreFile>(paths()[1]);
  state["stored PAT"] = textOf(stores.tableStores[1].pat);
  state["stored SDT"] = textOf(stores.tableStores[1].sdt);
  state["stored PMT"] = textOf(stores.tableStores[1].pmt);
  return state;
}

/** What MainTask has got until now. */
std::vector<fake::Notification> Starved::notifications() {
  std::vector<fake::Notification> all;
  (void)handler_->notifyNIM(0);
  do {
    for (fake::Notification& notification : mainTask_.take(1)) {
      all.push_back(std::move(notification));
    }
  } while (all.empty() || all.back().method != "notifyNIM");
  return all;
}

class StarvedCall : public Starved, public testing::WithParamInterface<Call> {
 protected:
  enum class Reply { kAnswer, kException, kClosed };

  /** Makes the call over a connection of its own. `failing`: as FailingAllocation, or none. */
  Reply call(int failing = -1);

  void expectOldOrNew(const State& before, const State& after);
  void expectVersionsSaved();

  bool failed_ = false;  ///< whether the last call had as many allocations
};

StarvedCall::Reply StarvedCall::call(int failing) {
  const auto wire = [] { return std::make_shared<TMemoryBuffer>(); };
  const auto framed = [](const auto& buffer) {
    return ControlTransportFactory().getTransport(buffer);
  };
  const auto request = wire();
  const auto reply = wire();
  Client client(std::make_shared<TBinaryProtocol>(framed(reply)),
                std::make_shared<TBinaryProtocol>(framed(request)));
  GetParam().send(client);
  const auto processor = makeControlProcessor(handler_);
  const auto in = FrameProtocolFactory().getProtocol(framed(request));
  const auto out = FrameProtocolFactory().getProtocol(framed(reply));
  clearSyncCalls();
  saveFailed = false;
  {
    const FailingAllocation starved(failing);
    try {
      (void)processor->process(in, out, nullptr);
    } catch (const TException&) {
      // The server closes the connection.
    }
    failed_ = starved.failed();
  }
  try {
    GetParam().receive(client);
    return Reply::kAnswer;
  } catch (const TApplicationException&) {
    return Reply::kException;
  } catch (const apache::thrift::transport::TTransportException&) {
    return Reply::kClosed;
  }
}

/** Each thing held is as it was or as it should be; a slot may be empty, too, which is how its
 * setter begins. */
void StarvedCall::expectOldOrNew(const State& before, const State& after) {
  for (const auto& [name, now] : stateNow()) {
    const bool isSlot = name == "PAT" || name == "SDT" || name == "CAT";
    EXPECT_TRUE(now == before.at(name) || now == after.at(name) || (isSlot && now == "none"))
        << name << "\nis     " << now << "\nwas    " << before.at(name) << "\nbecomes "
        << after.at(name);
  }
}

/** No version that MainTask has got is lost with the process, but where a save fails. */
void StarvedCall::expectVersionsSaved() {
  if (saveFailed) {
    return;
  }
  auto saved = readRecord<EITTableVersionStoreFile>(paths()[2]);
  for (const fake::Notification& notification : notifications()) {
    if (notification.method.rfind("notifyEIT", 0) == 0) {
      const EIT& eit = notification.eit;
      EXPECT_GE(saved.versionStores[eit.serviceId].versions[eit.tableId], eit.version)
          << "service " << eit.serviceId << " table " << eit.tableId;
    }
  }
}

TEST_P(StarvedCall, IsAnsweredOrClosedAndLeavesEachTableOldOrNew) {
  prepare();
  const State before = stateNow();
  prepare();
  ASSERT_EQ(call(), Reply::kAnswer);
  const State after = stateNow();
  std::map<Reply, int> replies;
  int number = 1;
  for (;; number += kEvery) {
    SCOPED_TRACE("allocation " + std::to_string(number));
    prepare();
    (void)notifications();
    const Reply reply = call(number);
    if (!failed_) {
      break;
    }
    ++replies[reply];
    expectVersionsSaved();
    expectOldOrNew(before, after);
    EXPECT_EQ(call(), Reply::kAnswer);
  }
  std::cout << GetParam().name << ": " << number - 1 << " allocations failed, "
            << replies[Reply::kAnswer] << " answers, " << replies[Reply::kException]
            << " exceptions, " << replies[Reply::kClosed] << " closed connections\n";
}

INSTANTIATE_TEST_SUITE_P(Control, StarvedCall, testing::ValuesIn(kCalls),
                         [](const auto& test) { return std::string(test.param.name); });

using StarvedStart = Starved;

TEST_F(StarvedStart, FailsOrGoesOnFromTheFilesAndLeavesThemAsTheyAre) {
  prepare();
  const State expected = stateNow();
  int number = 1;
  int whole = 0;
  for (bool failed = true; failed; number += kEvery) {
    SCOPED_TRACE("allocation " + std::to_string(number));
    restoreFiles();
    handler_.reset();
    {
      const FailingAllocation starved(number);
      try {
        handler_ = std::make_shared<SeenHandler>();
      } catch (const std::exception&) {
        // The process would end.
      }
      failed = starved.failed();
    }
    EXPECT_EQ(files(), saved_);
    if (handler_ != nullptr) {
      ++whole;
      giveTables();
      EXPECT_EQ(stateNow(), expected);
    }
  }
  std::cout << number - 1 << " allocations failed, " << whole << " starts\n";
}

}  // namespace
}  // namespace tevra::test
