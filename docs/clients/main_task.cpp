/**
 * Stands in for MainTask: takes tornel's notifications and prints a line for each, until it is
 * ended.
 *
 * Usage: main_task [MPTS]; CMakeLists.txt beside it builds it.
 */
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <thrift/Thrift.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/server/TSimpleServer.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>

#include "im_SINotifySrv.h"

namespace apache::thrift {
extern TOutput GlobalOutput;  // Thrift has it up to 0.22; since then TOutput::instance()
}

namespace {

using apache::thrift::protocol::TBinaryProtocolFactory;
using apache::thrift::server::TSimpleServer;
using apache::thrift::transport::TFramedTransportFactory;
using apache::thrift::transport::TServerSocket;
using apache::thrift::transport::TTransportException;

using tevra::thrift::dvb_tables::CAT;
using tevra::thrift::dvb_tables::EIT;
using tevra::thrift::dvb_tables::PAT;
using tevra::thrift::dvb_tables::PMT;
using tevra::thrift::dvb_tables::SDT;
using tevra::thrift::dvb_tables::TOT;
using tevra::thrift::in_module::im_SINotifySrvNull;
using tevra::thrift::in_module::im_SINotifySrvProcessor;

constexpr int kFirstPort = 9256;

/**
 * Must return soon: the daemon waits up to 2 s for the next notification to be taken. What is not
 * overridden, NIT, BAT and NIM, which no call causes, does nothing.
 */
class MainTask : public im_SINotifySrvNull {
 public:
  void requestConfiguration() override {
    // A real one now has its client hand over every table.
    std::cout << "configuration requested" << std::endl;
  }

  void notifyPAT(const PAT& pat) override {
    std::cout << "PAT of transport stream " << pat.transportStreamId << ", version " << pat.version
              << std::endl;
  }

  void notifyCAT(const CAT& cat) override {
    std::cout << "CAT, version " << cat.version << std::endl;
  }

  void notifyPMT(const PMT& pmt) override {
    std::cout << "PMT of service " << pmt.programNumber << ", version " << pmt.version << ", "
              << pmt.esList.size() << " streams" << std::endl;
  }

  void notifySDT(const SDT& sdt) override {
    std::cout << "SDT of transport stream " << sdt.transportStreamId << ", version " << sdt.version
              << std::endl;
  }

  void notifyTOT(const TOT& /*tot*/) override { std::cout << "TOT" << std::endl; }

  void notifyEITPresentFollowing(const EIT& eit) override {
    std::cout << "EIT of service " << eit.serviceId << ", table 0x" << std::hex << std::uppercase
              << eit.tableId << std::dec << ", version " << eit.version << std::endl;
  }

  void notifyEITSchedule(const EIT& eit) override { notifyEITPresentFollowing(eit); }
};

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
  const std::string mpts = arguments.empty() ? "0" : arguments[0];
  if (arguments.size() > 1 || mpts.size() != 1 || mpts < "0" || mpts > "3") {
    std::cerr << "usage: main_task [MPTS, 0 to 3]\n";
    return 2;
  }
  // Its lines would only repeat what the exceptions say.
  libraryOutput<apache::thrift::TOutput>(0).setOutputFunction([](const char*) {});
  const int port = kFirstPort + std::stoi(mpts);
  TSimpleServer server(std::make_shared<im_SINotifySrvProcessor>(std::make_shared<MainTask>()),
                       std::make_shared<TServerSocket>("127.0.0.1", port),
                       std::make_shared<TFramedTransportFactory>(),
                       std::make_shared<TBinaryProtocolFactory>());
  try {
    server.serve();  // one connection after the other, so the order stays
  } catch (const TTransportException& error) {
    std::cerr << "main_task: cannot listen on 127.0.0.1:" << port << " (" << error.what()
              << "): end the program that does\n";
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return run({argv + 1, argv + argc});
}
