/**
 * Hands a tiny multiplex to tornel, asks for one output and writes its packets to a file.
 *
 * Usage: client PACKETS.ts [MPTS [HOST]]; CMakeLists.txt beside it builds it.
 */
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <thrift/TApplicationException.h>
#include <thrift/Thrift.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>

#include "im_SIControlSrv.h"

namespace apache::thrift {
extern TOutput GlobalOutput;  // Thrift has it up to 0.22; since then TOutput::instance()
}

namespace {

using apache::thrift::TApplicationException;
using apache::thrift::TException;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransportException;

using tevra::thrift::common_fpga::OutputTables;
using tevra::thrift::common_fpga::PIDItem;
using tevra::thrift::common_fpga::SPTSConfiguration;
using tevra::thrift::dvb_tables::CAT;
using tevra::thrift::dvb_tables::Descriptor;
using tevra::thrift::dvb_tables::EIT;
using tevra::thrift::dvb_tables::EITEvent;
using tevra::thrift::dvb_tables::NIT;
using tevra::thrift::dvb_tables::NITTS;
using tevra::thrift::dvb_tables::PAT;
using tevra::thrift::dvb_tables::PATProgram;
using tevra::thrift::dvb_tables::PMT;
using tevra::thrift::dvb_tables::PMTES;
using tevra::thrift::dvb_tables::SDT;
using tevra::thrift::dvb_tables::SDTService;
using tevra::thrift::dvb_tables::TOT;
using tevra::thrift::in_module::EITMap;
using tevra::thrift::in_module::im_SIControlSrvClient;
using tevra::thrift::in_module::im_SIControlSrvIf;
using tevra::thrift::in_module::OutputServiceDescription;
using tevra::thrift::in_module::SrvOutputRequest;
using tevra::thrift::spts::LastNodeSettings;

constexpr int kFirstPort = 9224;
constexpr int kPatienceMs = 30'000;

constexpr int kTransportStream = 1;
constexpr int kNetwork = 1;
constexpr int kService = 101;
constexpr int kPmtPid = 256;
constexpr int kVideoPid = 257;
constexpr int kEnglishPid = 258;
constexpr int kGermanPid = 259;
constexpr int kEcmPid = 512;
constexpr int kEmmPid = 80;
constexpr int kOutput = 1201;  // service id of the output, and here its global service id too

/** What the user is told. */
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::string byte(size_t value) {
  return {static_cast<char>(value & 0xFF)};
}

Descriptor descriptor(int tag, const std::string& data) {
  Descriptor record;
  record.tag = tag;
  record.data = data;
  return record;
}

/** ISO/IEC 13818-1 2.6.16: CA_system_ID, three reserved bits, CA_PID. */
Descriptor caDescriptor(size_t pid) {
  return descriptor(0x09, byte(0x00) + byte(0x01) + byte(0xE0 | pid >> 8) + byte(pid));
}

/** ISO/IEC 13818-1 2.6.18, audio type 0. */
Descriptor languageDescriptor(const std::string& code) {
  return descriptor(0x0A, code + byte(0));
}

/** EN 300 468 6.2.33. */
Descriptor serviceDescriptor(size_t type, const std::string& provider, const std::string& name) {
  return descriptor(0x48, byte(type) + byte(provider.size()) + provider + byte(name.size()) + name);
}

/** EN 300 468 6.2.37, without text. */
Descriptor shortEventDescriptor(const std::string& language, const std::string& name) {
  return descriptor(0x4D, language + byte(name.size()) + name + byte(0));
}

int64_t bcd(int64_t value) {
  return value / 10 * 16 + value % 10;
}

/** EN 300 468 annex C: Modified Julian Date in 16 bits, then hours, minutes and seconds in BCD. */
int64_t dvbTime(int64_t unixSeconds) {
  constexpr int64_t kSecondsPerDay = 86400;
  const int64_t days = 40587 + unixSeconds / kSecondsPerDay;
  const int64_t seconds = unixSeconds % kSecondsPerDay;
  return days << 24 | bcd(seconds / 3600) << 16 | bcd(seconds / 60 % 60) << 8 | bcd(seconds % 60);
}

PAT makePat() {
  PAT pat;
  pat.transportStreamId = kTransportStream;
  pat.version = 5;
  pat.currentNext = true;
  PATProgram& program = pat.programs.emplace_back();
  program.programNumber = kService;
  program.pid = kPmtPid;
  return pat;
}

CAT makeCat() {
  CAT cat;
  cat.version = 2;
  cat.currentNext = true;
  cat.descriptors = {caDescriptor(kEmmPid)};
  return cat;
}

PMTES stream(int type, int pid, const std::vector<Descriptor>& descriptors) {
  PMTES record;
  record.streamType = type;
  record.pid = pid;
  record.descriptors = descriptors;
  return record;
}

PMT makePmt() {
  PMT pmt;
  pmt.programNumber = kService;
  pmt.version = 9;
  pmt.currentNext = true;
  pmt.pcrPid = kVideoPid;
  pmt.descriptors = {caDescriptor(kEcmPid)};
  pmt.esList = {stream(0x1B, kVideoPid, {}), stream(0x04, kEnglishPid, {languageDescriptor("eng")}),
                stream(0x04, kGermanPid, {languageDescriptor("ger")})};
  return pmt;
}

SDT makeSdt() {
  SDT sdt;
  sdt.tableId = 0x42;
  sdt.transportStreamId = kTransportStream;
  sdt.version = 3;
  sdt.currentNext = true;
  sdt.originalNetworkId = kNetwork;
  SDTService& service = sdt.services.emplace_back();
  service.serviceId = kService;
  service.eitPresentFollowing = true;
  service.runningStatus = 4;
  service.freeCA = true;
  service.descriptors = {serviceDescriptor(0x19, "Example", "Uno")};
  return sdt;
}

NIT makeNit() {
  NIT nit;
  nit.tableId = 0x40;
  nit.extension = kNetwork;
  nit.networkId = kNetwork;
  nit.version = 1;
  nit.currentNext = true;
  nit.descriptors = {descriptor(0x40, "Example network")};
  NITTS& transportStream = nit.transportStreams.emplace_back();
  transportStream.transportStreamId = kTransportStream;
  transportStream.originalNetworkId = kNetwork;
  return nit;
}

TOT makeTot() {
  TOT tot;
  tot.tableId = 0x73;
  tot.utcTime = dvbTime(std::time(nullptr));
  tot.currentNext = true;
  return tot;
}

EITEvent event(int id, int64_t start, int runningStatus, const std::string& name) {
  EITEvent record;
  record.eventId = id;
  record.startTime = dvbTime(start);
  record.duration = 0x010000;  // one hour
  record.runningStatus = runningStatus;
  record.descriptors = {shortEventDescriptor("eng", name)};
  return record;
}

/** Present and following event, under the keys by which the daemon keeps them: service, table. */
EITMap makeEits() {
  constexpr int64_t kHour = 3600;
  const int64_t hour = std::time(nullptr) / kHour * kHour;
  EIT eit;
  eit.tableId = 0x4E;
  eit.serviceId = kService;
  eit.version = 7;
  eit.currentNext = true;
  eit.transportStreamId = kTransportStream;
  eit.originalNetworkId = kNetwork;
  eit.lastTableId = 0x4E;
  eit.events = {event(11, hour, 4, "News"), event(12, hour + kHour, 1, "Weather")};
  return {{kService, {{eit.tableId, eit}}}};
}

/** One output that leaves the chain here, with English audio alone. */
SrvOutputRequest makeRequest() {
  SrvOutputRequest request;
  request.inputSID = kService;
  OutputServiceDescription& output = request.outputs[kOutput];
  output.globalSID = kOutput;
  output.nextNode = 0;
  output.outputSID = kOutput;
  output.serviceName = "Uno \xC3\xA9";  // UTF-8
  output.transportStreamId = 7;
  output.originalNetworkId = kNetwork;
  LastNodeSettings& settings = request.lastNodeSettings[kOutput].emplace_back();
  settings.globalSID = kOutput;
  settings.uniqueSID = kOutput;
  settings.audioFilter = 1;
  settings.audioLanguages.emplace_back().language = "eng";
  return request;
}

/** The PAT goes first: it decides whether the PIDs of before still hold. */
void feed(im_SIControlSrvIf& daemon) {
  daemon.setPAT(makePat());
  daemon.setCAT(makeCat());
  daemon.setPMT(makePmt());
  daemon.setSDT(makeSdt());
  (void)daemon.setNIT(makeNit());  // always true
  daemon.setTOT(makeTot());
  daemon.setEITPresentFollowing(makeEits());
}

SPTSConfiguration ask(im_SIControlSrvIf& daemon) {
  std::map<int32_t, SPTSConfiguration> answer;
  daemon.getSrvOutputData(answer, makeRequest());
  if (answer.count(kOutput) == 0) {
    throw Failure("the daemon has no PMT of service " + std::to_string(kService));
  }
  return answer[kOutput];
}

/** Everything over one connection, which is closed at once: others wait for it. */
SPTSConfiguration feedAndAsk(const std::string& host, int port) {
  const std::string address = host + ":" + std::to_string(port);
  const auto socket = std::make_shared<TSocket>(host, port);
  socket->setConnTimeout(kPatienceMs);
  socket->setSendTimeout(kPatienceMs);
  socket->setRecvTimeout(kPatienceMs);
  const auto transport = std::make_shared<TFramedTransport>(socket);
  try {
    transport->open();
  } catch (const TTransportException&) {
    throw Failure("no daemon at " + address + ": start it with tornel --set " +
                  std::to_string(port - kFirstPort));
  }
  try {
    im_SIControlSrvClient daemon(std::make_shared<TBinaryProtocol>(transport));
    feed(daemon);
    return ask(daemon);
  } catch (const TApplicationException& error) {
    throw Failure(std::string("the daemon refused a call: ") + error.what());
  } catch (const TException&) {
    throw Failure("the daemon at " + address +
                  " did not answer a call: its log says why, or another client keeps it");
  }
}

void printTable(const char* name, int version, const std::vector<std::string>& packets) {
  std::cout << name << " version " << version << ", " << packets.size() << " packet(s)\n";
}

void printOutput(const SPTSConfiguration& configuration) {
  for (const PIDItem& item : configuration.pidItems) {
    std::printf("PID %d -> %d, attributes 0x%02X\n", item.inputPid, item.outputPid,
                static_cast<unsigned>(item.attributes));
  }
  const OutputTables& tables = configuration.outputTables;
  printTable("PAT", tables.dvbTables.pat.version, tables.patPackets);
  printTable("SDT", tables.dvbTables.sdt.version, tables.sdtPackets);
  printTable("PMT", tables.dvbTables.pmt.version, tables.pmtPackets);
}

void writePackets(const SPTSConfiguration& configuration, const std::string& path) {
  const OutputTables& tables = configuration.outputTables;
  std::ofstream file(path, std::ios::binary);
  for (const auto* packets : {&tables.patPackets, &tables.sdtPackets, &tables.pmtPackets}) {
    for (const std::string& packet : *packets) {
      file << packet;
    }
  }
  if (!file.flush()) {
    throw Failure("cannot write " + path + ": give a file that can be written");
  }
}

/** Where the library sends its own lines, whichever version it is. */
template <class Output>
auto libraryOutput(int /*preferred*/) -> decltype(Output::instance()) {
  return Output::instance();
}
template <class Output>
Output& libraryOutput(...) {
  return apache::thrift::GlobalOutput;
}

int run(const std::vector<std::string>& arguments) {
  const std::string mpts = arguments.size() > 1 ? arguments[1] : "0";
  if (arguments.empty() || arguments.size() > 3 || mpts.size() != 1 || mpts < "0" || mpts > "3") {
    std::cerr << "usage: client PACKETS.ts [MPTS, 0 to 3 [HOST]]\n";
    return 2;
  }
  const std::string host = arguments.size() > 2 ? arguments[2] : "127.0.0.1";
  // Its lines would only repeat what the exceptions say.
  libraryOutput<apache::thrift::TOutput>(0).setOutputFunction([](const char*) {});
  const SPTSConfiguration configuration = feedAndAsk(host, kFirstPort + std::stoi(mpts));
  printOutput(configuration);
  writePackets(configuration, arguments[0]);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run({argv + 1, argv + argc});
  } catch (const std::exception& failure) {
    std::cerr << "client: " << failure.what() << "\n";
    return 1;
  }
}
