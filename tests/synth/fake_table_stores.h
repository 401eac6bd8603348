#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "synth/psi_synthesis.h"

namespace tevra::test {

/** Keeps table stores in memory and remembers what each write would have put into the file. */
class FakeTableStores final : public TableStoreOwner {
 public:
  int32_t mptsIndex() const override { return index; }
  TableStore& tableStore(int32_t inputProgramNumber) override { return stores[inputProgramNumber]; }
  int writeTableStores() override {
    written.push_back(stores);
    if (onWrite) {
      onWrite();
    }
    return writeResult;
  }

  int32_t index = 2;
  int writeResult = 0;
  std::map<int32_t, TableStore> stores;
  std::vector<std::map<int32_t, TableStore>> written;  ///< one per write
  std::function<void()> onWrite;
};

}  // namespace tevra::test
