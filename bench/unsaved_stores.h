#pragma once

#include "records/records.h"
#include "synth/psi_synthesis.h"

namespace tevra::bench {

/** Table stores that are never written. */
class UnsavedStores final : public TableStoreOwner {
 public:
  [[nodiscard]] int32_t mptsIndex() const override { return 0; }
  [[nodiscard]] TableStore& tableStore(int32_t inputProgramNumber) override {
    return stores_.tableStores[inputProgramNumber];
  }
  [[nodiscard]] int writeTableStores() override { return 0; }

  void forget() { stores_ = {}; }

 private:
  TableStoreFile stores_;
};

}  // namespace tevra::bench
