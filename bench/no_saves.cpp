#include "bench/no_saves.h"

#include "store/table_stores.h"

namespace {

int alive = 0;

}  // namespace

namespace tevra::bench {

NoSaves::NoSaves() {
  ++alive;
}

NoSaves::~NoSaves() {
  --alive;
}

}  // namespace tevra::bench

// The linker sends every call of TableStores::saveTableStores here; the names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

void __real__ZN5tevra11TableStores15saveTableStoresEv(tevra::TableStores* stores);

void __wrap__ZN5tevra11TableStores15saveTableStoresEv(tevra::TableStores* stores) {
  if (alive == 0) {
    __real__ZN5tevra11TableStores15saveTableStoresEv(stores);
  }
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
