#include "tools/si/section_gatherer.h"

#include <utility>

#include "tools/si/section_reader.h"

namespace tevra::tools {
namespace {

constexpr uint8_t kStuffing = 0xFF;   // in the place of a table_id
constexpr size_t kSectionNumber = 6;  // where section_number stands in a long header

// Like the TDT without a CRC_32 (EN 300 468, 5.2.7, 5.2.8 and 7.1.1).
constexpr int kTableRst = 0x71;
constexpr int kTableSt = 0x72;
constexpr int kTableDit = 0x7E;

bool isReadable(const TsPacket& packet) {
  const size_t offset = packet.payloadOffset();
  return !packet.transportError() && !packet.scrambled() && offset < kTsPacketSize &&
         (!packet.unitStart() || offset + 1 + packet.data()[offset] < kTsPacketSize);
}

bool hasCrc(const std::vector<uint8_t>& section) {
  switch (section[0]) {
    case kTableTdt:
    case kTableRst:
    case kTableSt:
    case kTableDit:
      return false;
    default:
      return section[0] == kTableTot || (section[1] & 0x80) != 0;  // section_syntax_indicator
  }
}

/** The CRC_32 of ISO/IEC 13818-1 annex A; 0 over a section that ends with its own. */
uint32_t crc32(const std::vector<uint8_t>& bytes) {
  constexpr uint32_t kPolynomial = 0x04C11DB7;
  uint32_t crc = 0xFFFFFFFF;
  for (const uint8_t byte : bytes) {
    crc ^= uint32_t{byte} << 24;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc << 1) ^ ((crc >> 31) * kPolynomial);
    }
  }
  return crc;
}

}  // namespace

SectionFaults& SectionFaults::operator+=(const SectionFaults& more) {
  truncatedSections += more.truncatedSections;
  crcErrors += more.crcErrors;
  malformedSections += more.malformedSections;
  discontinuities += more.discontinuities;
  return *this;
}

std::vector<Section> SectionGatherer::push(const TsPacket& packet) {
  if (!isReadable(packet) || packet.continuityCounter() == counter_) {
    return {};
  }
  noteCounter(packet.continuityCounter());
  std::vector<Section> sections;
  const uint8_t* position = packet.data() + packet.payloadOffset();
  const uint8_t* const end = packet.data() + kTsPacketSize;
  if (packet.unitStart()) {
    const uint8_t* const start = position + 1 + *position;
    if (!bytes_.empty()) {
      take(position + 1, start, sections);
    }
    faults_.truncatedSections += bytes_.empty() ? 0 : 1;
    bytes_.clear();
    position = start;
  } else if (bytes_.empty()) {
    return {};
  }
  while (position != end && (!bytes_.empty() || *position != kStuffing)) {
    position = take(position, end, sections);
  }
  return sections;
}

void SectionGatherer::restart() {
  counter_ = -1;
  bytes_.clear();
}

void SectionGatherer::noteCounter(int counter) {
  if (counter_ >= 0 && counter != ((counter_ + 1) & 0x0F)) {
    ++faults_.discontinuities;
    bytes_.clear();
  }
  counter_ = counter;
}

const uint8_t* SectionGatherer::take(const uint8_t* begin, const uint8_t* end,
                                     std::vector<Section>& sections) {
  for (const uint8_t* position = begin; position != end;) {
    bytes_.push_back(*position++);
    if (bytes_.size() < kSectionStart) {
      continue;
    }
    const size_t size =
        kSectionStart + SectionReader(bytes_.data() + 1, bytes_.data() + kSectionStart).length();
    if (size > kLongestSection) {
      bytes_.clear();
      return end;  // where the next section starts is not known
    }
    if (bytes_.size() == size) {
      finish(sections);
      return position;
    }
  }
  return end;
}

void SectionGatherer::finish(std::vector<Section>& sections) {
  const std::vector<uint8_t> bytes = std::exchange(bytes_, {});
  if (hasCrc(bytes) && crc32(bytes) != 0) {
    ++faults_.crcErrors;
    tell(bytes, SectionSeen::State::kWrongCrc);
    return;
  }
  auto section = Section::parse(bytes.data(), bytes.size());
  const bool isMalformed = !section && Section::isHandled(bytes[0]);
  faults_.malformedSections += isMalformed ? 1 : 0;
  tell(bytes, isMalformed ? SectionSeen::State::kMalformed : SectionSeen::State::kSound);
  if (section) {
    sections.push_back(std::move(*section));
  }
}

void SectionGatherer::tell(const std::vector<uint8_t>& bytes, SectionSeen::State state) const {
  if (onSection_) {
    const bool isLong = (bytes[1] & 0x80) != 0 && bytes.size() > kSectionNumber;
    onSection_({state, bytes[0], isLong ? (bytes[3] << 8) | bytes[4] : 0,
                isLong ? bytes[kSectionNumber] : 0});
  }
}

}  // namespace tevra::tools
