#include "tools/si/eit_decoder.h"

namespace tevra::tools {
namespace {

constexpr size_t kTableHeader = 6;
constexpr size_t kEventHeader = 12;
constexpr int64_t kNvodStartTime = 0xFFFFF000;

int64_t read40(const uint8_t* bytes) {
  int64_t value = 0;
  for (int i = 0; i < 5; ++i) {
    value = (value << 8) | bytes[i];
  }
  return value;
}

std::vector<Descriptor> descriptors(const uint8_t* begin, const uint8_t* end) {
  const uint8_t* position = begin;
  std::vector<Descriptor> loop;
  while (position < end) {
    Descriptor& descriptor = loop.emplace_back();
    descriptor.tag = position[0];
    descriptor.data.assign(reinterpret_cast<const char*>(position + 2), position[1]);
    position += 2 + position[1];
  }
  return loop;
}

void appendEvents(const Section& section, std::vector<EITEvent>& events) {
  const uint8_t* position = section.payload() + kTableHeader;
  while (position < section.payloadEnd()) {
    EITEvent& event = events.emplace_back();
    event.eventId = read16(position);
    event.startTime = read40(position + 2);
    event.duration = (position[7] << 16) | read16(position + 8);
    event.runningStatus = position[10] >> 5;
    event.freeCA = (position[10] & 0x10) != 0;
    event.nvod = (event.startTime & kNvodStartTime) == kNvodStartTime && event.runningStatus == 0;
    const uint8_t* loop = position + kEventHeader;
    position = loop + read12(position + 10);
    event.descriptors = descriptors(loop, position);
  }
}

}  // namespace

EIT decodeEit(const std::vector<Section>& sections) {
  const Section& first = sections.front();
  EIT eit;
  eit.tableId = first.tableId();
  eit.serviceId = first.extension();
  eit.version = first.version();
  eit.currentNext = first.isCurrent();
  eit.transportStreamId = read16(first.payload());
  eit.originalNetworkId = read16(first.payload() + 2);
  eit.segmentLastSectionNumber = first.payload()[4];
  eit.lastTableId = first.payload()[5];
  for (const Section& section : sections) {
    appendEvents(section, eit.events);
  }
  return eit;
}

}  // namespace tevra::tools
