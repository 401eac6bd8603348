#include "tools/si/section.h"

#include <utility>

#include "tools/si/section_reader.h"
#include "tools/si/table_decoder.h"

namespace tevra::tools {
namespace {

constexpr size_t kCrc = 4;
constexpr size_t kLongestButEit = 1024;  // section_length is at most 1021 (EN 300 468, 5.2)

}  // namespace

bool Section::isHandled(int tableId) {
  switch (tableId) {
    case kTablePat:
    case kTableCat:
    case kTablePmt:
    case kTableNitActual:
    case kTableSdtActual:
    case kTableBat:
    case kTableTot:
      return true;
    default:
      return isEit(tableId);
  }
}

std::optional<Section> Section::parse(const uint8_t* bytes, size_t size) {
  if (size < kSectionStart + kCrc || !isHandled(bytes[0])) {
    return std::nullopt;
  }
  SectionReader reader(bytes, bytes + size - kCrc);
  Section section;
  section.tableId = reader.byte();
  const int flagsAndLength = reader.word();
  const bool isLong = (flagsAndLength & 0x8000) != 0;
  // A TOT's section_syntax_indicator is 0 by the standard; nothing else may have a short header.
  if (isLong == (section.tableId == kTableTot) ||
      size > (isEit(section.tableId) ? kLongestSection : kLongestButEit) ||
      size != kSectionStart + static_cast<size_t>(flagsAndLength & 0x0FFF)) {
    return std::nullopt;
  }
  if (isLong) {
    section.extension = reader.word();
    const int version = reader.byte();
    section.version = (version >> 1) & 0x1F;
    section.isCurrent = (version & 0x01) != 0;
    section.number = reader.byte();
    section.lastNumber = reader.byte();
  }
  section.content = readContent(section, reader);
  return reader.ok() ? std::make_optional(std::move(section)) : std::nullopt;
}

}  // namespace tevra::tools
