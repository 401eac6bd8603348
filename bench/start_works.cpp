#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "bench/sample_tables.h"
#include "bench/work.h"
#include "control/control_server.h"
#include "store/table_store_files.h"

namespace tevra::bench {
namespace {

constexpr int32_t kMpts = 0;
constexpr int kServices = 100;
constexpr int32_t kScheduleTables = 8;

EITTableVersionStoreFile sampleVersions(int services) {
  EITTableVersionStoreFile file;
  for (int32_t serviceId = 1; serviceId <= services; ++serviceId) {
    for (int32_t table = 0; table < kScheduleTables; ++table) {
      file.versionStores[serviceId].versions[0x50 + table] = table;
    }
  }
  return file;
}

void storeServices(int services) {
  if (saveTableStoreFile(storedEntries(sampleStores(services)), kMpts) != 0 ||
      saveEITTableVersionStoreFile(storedEntries(sampleVersions(services)), kMpts) != 0) {
    throw std::runtime_error("the files cannot be written");
  }
}

class LoadFiles : public Work {
 public:
  LoadFiles() { storeServices(kServices); }

  void run() override {
    TableStoreFile stores;
    EITTableVersionStoreFile versions;
    if (loadTableStoreFile(stores, kMpts) != 0 ||
        loadEITTableVersionStoreFile(versions, kMpts) != 0) {
      throw std::runtime_error("the files cannot be read");
    }
  }
};

/** Until the port listens. The server that it starts stays for the rest of the process, so only
 * the first run of a process starts anything. */
class Start : public Work {
 public:
  Start() { storeServices(kServices); }

  void run() override {
    if (!server_.has_value()) {
      server_.emplace(startControlServer(kMpts));
    }
  }

 private:
  std::optional<ThreadedSimpleServer> server_;
};

}  // namespace

void addStartWorks(Works& works) {
  works.push_back({"start/100/floor", [] { return std::make_unique<LoadFiles>(); }});
  works.push_back({"start/100/serving", [] { return std::make_unique<Start>(); }});
}

}  // namespace tevra::bench
