#pragma once

#include <gmock/gmock.h>

#include <cstdint>

#include "records/records.h"

namespace tevra::test {

/** A PIDItem of these three members. */
inline auto pidItem(int32_t inputPid, int32_t outputPid, int32_t attributes) {
  PIDItem item;
  item.inputPid = inputPid;
  item.outputPid = outputPid;
  item.attributes = attributes;
  return testing::Eq(item);
}

/** A PIDItem that was not remapped. */
inline auto pidItem(int32_t pid, int32_t attributes) {
  return pidItem(pid, pid, attributes);
}

}  // namespace tevra::test
