#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/records/record_members.h"

namespace tevra::test {

/**
 * Fills records: every number and text differs from all others of the same filler, booleans are
 * true, lists and maps have two elements.
 */
class RecordFiller {
 public:
  template <class Value>
  void fill(Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
      value = true;
    } else if constexpr (std::is_same_v<Value, int64_t>) {
      value = kAbove32Bits + ++last_;
    } else if constexpr (std::is_integral_v<Value>) {
      value = static_cast<Value>(++last_);
    } else {
      fillCompound(value);
    }
  }

 private:
  static constexpr int64_t kAbove32Bits = 0xC079000000;

  void fillCompound(std::string& text) { text = "text " + std::to_string(++last_); }

  template <class Element>
  void fillCompound(std::vector<Element>& list) {
    list.resize(2);
    fill(list[0]);
    fill(list[1]);
  }

  template <class Value>
  void fillCompound(std::map<int32_t, Value>& map) {
    for (int element = 0; element < 2; ++element) {
      const int32_t key = ++last_;
      fill(map[key]);
    }
  }

  template <class Record>
  void fillCompound(Record& record) {
    forEachMember<Record>([&](size_t, auto member) { fill(record.*member); });
  }

  int32_t last_ = 0;
};

template <class Record>
Record sample() {
  Record record;
  RecordFiller().fill(record);
  return record;
}

}  // namespace tevra::test
