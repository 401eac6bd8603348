#include "bench/send_tables.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>

#include <thrift/transport/TSocket.h>

#include "bench/control_call.h"
#include "bench/sample_tables.h"

namespace tevra::bench {

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
  } else if (what == "schedule") {
    client.setEITSchedule(sampleSchedule(kFullSchedule));
  } else {
    throw std::invalid_argument("tot or schedule can be sent");
  }
  return EXIT_SUCCESS;
}

}  // namespace tevra::bench
