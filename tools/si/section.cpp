#include "tools/si/section.h"

#include <utility>

#include "tools/si/section_reader.h"
#include "tools/si/table_decoder.h"

namespace tevra::tools {
namespace {

constexpr size_t kStart = 3;  // up to section_length, which counts the rest
constexpr size_t kCrc = 4;
/** section_length of every table but the EIT is at most 1021, the EIT's 4093 (EN 300 468, 5.2). */
constexpr size_t kLongestSection = 1024;
constexpr size_t kLongestEitSection = 4096;

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
  if (size < kStart + kCrc || !isHandled(bytes[0])) {
    return std::nullopt;
  }
  SectionReader reader(bytes, bytes + size - kCrc);
  Section section;
  section.tableId = reader.byte();
  const int flagsAndLength = reader.word();
  const bool isLong = (flagsAndLength & 0x8000) != 0;
  // A TOT's section_syntax_indicator is 0 by the standard; nothing else may have a short header.
  if (isLong == (section.tableId == kTableTot) ||
      size > (isEit(section.tableId) ? kLongestEitSection : kLongestSection) ||
      size != kStart + static_cast<size_t>(flagsAndLength & 0x0FFF)) {
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
