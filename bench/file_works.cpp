#include <memory>
#include <stdexcept>
#include <string>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "bench/sample_tables.h"
#include "bench/work.h"
#include "store/table_store_files.h"

namespace tevra::bench {
namespace {

using apache::thrift::protocol::TJSONProtocol;
using apache::thrift::transport::TMemoryBuffer;

class EncodeToMemory : public Work {
 public:
  explicit EncodeToMemory(int services) : stores_(sampleStores(services)) {}

  void prepare() override { memory_->resetBuffer(); }

  void run() override {
    TJSONProtocol protocol(memory_);
    stores_.write(&protocol);
  }

 private:
  const TableStoreFile stores_;
  std::shared_ptr<TMemoryBuffer> memory_ = std::make_shared<TMemoryBuffer>();
};

class Save : public Work {
 public:
  explicit Save(int services) : stores_(storedEntries(sampleStores(services))) { run(); }

  void run() override {
    if (saveTableStoreFile(stores_, 0) != 0) {
      throw std::runtime_error("the table stores cannot be saved");
    }
  }

 private:
  const StoredTablesMap stores_;
};

}  // namespace

void addFileWorks(Works& works) {
  for (const int services : {1, 10, 100, 1000}) {
    const std::string name = "save/" + std::to_string(services);
    works.push_back(
        {name + "/floor", [services] { return std::make_unique<EncodeToMemory>(services); }});
    works.push_back({name + "/file", [services] { return std::make_unique<Save>(services); }});
  }
}

}  // namespace tevra::bench
