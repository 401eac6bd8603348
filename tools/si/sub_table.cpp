#include "tools/si/sub_table.h"

#include <algorithm>

namespace tevra::tools {
namespace {

constexpr int kSegmentSize = 8;

}  // namespace

std::vector<Section> SubTable::add(Section section) {
  const Version version = {section.extension, section.version};
  if (delivered_ == version) {
    startOver();  // what was begun of another version did not come to stay
    return {};
  }
  if (section.number > section.lastNumber) {
    return {};
  }
  if (collecting_ != version || lastNumber_ != section.lastNumber) {
    startOver();
    collecting_ = version;
    lastNumber_ = section.lastNumber;
  }
  const int tableId = section.tableId;
  const int number = section.number;
  sections_.insert_or_assign(number, std::move(section));
  if (!isComplete(tableId)) {
    return {};
  }
  std::vector<Section> complete;
  complete.reserve(sections_.size());
  for (auto& entry : sections_) {
    complete.push_back(std::move(entry.second));
  }
  startOver();
  delivered_ = version;
  return complete;
}

void SubTable::startOver() {
  sections_.clear();
  collecting_.reset();
}

bool SubTable::isComplete(int tableId) const {
  return isEit(tableId) ? hasAllSegments() : hasAll(0, lastNumber_);
}

bool SubTable::hasAll(int first, int last) const {
  auto entry = sections_.find(first);
  for (int number = first; number <= last; ++number, ++entry) {
    if (entry == sections_.end() || entry->first != number) {
      return false;
    }
  }
  return true;
}

bool SubTable::hasAllSegments() const {
  for (int first = 0; first <= lastNumber_; first += kSegmentSize) {
    const auto section = sections_.find(first);
    if (section == sections_.end()) {
      return false;
    }
    const int segmentEnd = std::min(first + kSegmentSize - 1, lastNumber_);
    const int announced = std::get<EIT>(section->second.content).segmentLastSectionNumber;
    // A number from outside the segment says nothing: then the segment has to be full.
    const int last = announced < first || announced > segmentEnd ? segmentEnd : announced;
    if (!hasAll(first, last)) {
      return false;
    }
  }
  return true;
}

}  // namespace tevra::tools
