#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "bench/call_work.h"
#include "bench/control_call.h"
#include "bench/own_handler.h"
#include "bench/sample_tables.h"
#include "bench/work.h"
#include "cfdb/pid_allocator.h"
#include "control/control_server.h"
#include "platform/configuration_root.h"
#include "store/table_store_files.h"

namespace tevra::bench {
namespace {

constexpr int32_t kNoMpts = -1;
constexpr int32_t kFirstMpts = 0;

template <class Record>
void writeFile(const std::string& name, const Record& record) {
  const auto text = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  apache::thrift::protocol::TJSONProtocol protocol(text);
  record.write(&protocol);
  const std::filesystem::path folder = configurationRoot() + "/Tornel";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / name) << text->getBufferAsString();
}

void storeServices(int services, int32_t mptsIndex) {
  writeFile("TableStoreFile" + std::to_string(mptsIndex), sampleStores(services));
  writeFile("EITTableVersionStoreFile" + std::to_string(mptsIndex), sampleVersions(services));
}

/** Has so many services in its files, and the tables of the first of them. */
CallWork::Start handlerWith(int services) {
  return [services] {
    storeServices(services, kNoMpts);
    const auto handler = std::make_shared<OwnHandler>(kNoMpts);
    handler->setTOT(sampleTot(0));
    handler->setPAT(samplePat());
    handler->setSDT(sampleSdt());
    handler->setPMT(samplePmt(10, 17));
    return handler;
  };
}

std::string requestMessage(int32_t outputSID) {
  const SrvOutputRequest request = sampleRequest(kServiceId, outputSID);
  return messageOf([&](BareClient& client) { client.send_getSrvOutputData(request); });
}

std::string presentFollowingMessage() {
  return messageOf(
      [](BareClient& client) { client.send_setEITPresentFollowing(samplePresentFollowing()); });
}

/** A new map that fills its pool. */
class SavePids : public Work {
 public:
  SavePids() {
    prepare();
    run();
  }

  void prepare() override {
    pids_.followTransportStream(++transportStreamId_);
    for (int32_t pid = 0; pid < kPids; ++pid) {
      (void)pids_.getConflictFreePID(pid);
    }
  }

  void run() override { pids_.saveConflictFreeDB(); }

 private:
  static constexpr int32_t kPids = 200;

  int32_t transportStreamId_ = 0;
  PidAllocator pids_{kFirstMpts};
};

class LoadFiles : public Work {
 public:
  explicit LoadFiles(int services) { storeServices(services, kFirstMpts); }

  void run() override {
    TableStoreFile stores;
    EITTableVersionStoreFile versions;
    if (loadTableStoreFile(stores, kFirstMpts) != 0 ||
        loadEITTableVersionStoreFile(versions, kFirstMpts) != 0) {
      throw std::runtime_error("the files cannot be read");
    }
  }
};

/** Until the port listens. The server that it starts stays for the rest of the process, so only
 * the first run of a process starts anything. */
class Start : public Work {
 public:
  explicit Start(int services) { storeServices(services, kFirstMpts); }

  void run() override {
    if (!server_.has_value()) {
      server_.emplace(startControlServer(kFirstMpts));
    }
  }

 private:
  std::optional<ThreadedSimpleServer> server_;
};

}  // namespace

void addStoredWorks(Works& works) {
  for (const int services : {1, 10, 100, 1000}) {
    const std::string name = "request/" + std::to_string(services);
    works.push_back({name + "/unchanged", [services] {
                       return std::make_unique<CallWork>(handlerWith(services),
                                                         std::vector{requestMessage(1201)});
                     }});
    works.push_back({name + "/changed", [services] {
                       return std::make_unique<CallWork>(
                           handlerWith(services),
                           std::vector{requestMessage(1201), requestMessage(1202)});
                     }});
  }
  works.push_back({"eit-pf/100/saved", [] {
                     return std::make_unique<CallWork>(handlerWith(100),
                                                       std::vector{presentFollowingMessage()});
                   }});
  works.push_back({"pid-map/200/saved", [] { return std::make_unique<SavePids>(); }});
  works.push_back({"start/100/floor", [] { return std::make_unique<LoadFiles>(100); }});
  works.push_back({"start/100/serving", [] { return std::make_unique<Start>(100); }});
}

}  // namespace tevra::bench
