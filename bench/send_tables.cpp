#include "bench/send_tables.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>

#include <thrift/transport/TSocket.h>

#include "bench/control_call.h"
#include "bench/sample_tables.h"

namespace tevra::bench {
namespace {

constexpr int kServices = 100;

void sendServices(BareClient& client) {
  client.setPAT(samplePat(kServices));
  client.setSDT(sampleSdt());
  for (int32_t serviceId = kServiceId; serviceId < kServiceId + kServices; ++serviceId) {
    client.setPMT(samplePmt(10, 17, serviceId));
  }
}

void sendRequests(BareClient& client) {
  for (int32_t serviceId = kServiceId; serviceId < kServiceId + kServices; ++serviceId) {
    std::map<int32_t, SPTSConfiguration> answer;
    client.getSrvOutputData(answer, sampleRequest(serviceId, serviceId));
  }
}

ScheduleSize scheduleOf(const std::string& events) {
  for (const ScheduleSize size : kScheduleSizes) {
    if (std::to_string(eventCount(size)) == events) {
      return size;
    }
  }
  throw std::invalid_argument("no schedule has " + events + " events");
}

}  // namespace

int sendTables(const std::string& what) {
  using apache::thrift::transport::TFramedTransport;
  using apache::thrift::transport::TSocket;
  constexpr int kPort = 9224;
  const auto transport =
      std::make_shared<TFramedTransport>(std::make_shared<TSocket>("127.0.0.1", kPort));
  BareClient client(std::make_shared<BareProtocol>(transport));
  transport->open();
  if (what == "tot") {
    client.setTOT(sampleTot(0));
  } else if (what == "services") {
    sendServices(client);
  } else if (what == "requests") {
    sendRequests(client);
  } else {
    client.setEITSchedule(sampleSchedule(scheduleOf(what)));
  }
  return EXIT_SUCCESS;
}

}  // namespace tevra::bench
