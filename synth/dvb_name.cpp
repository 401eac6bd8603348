#include "synth/dvb_name.h"

#include <cstdint>

namespace tevra {
namespace {

// Character table selectors (EN 300 468, tables A.3 and A.4) with characters of more than one byte.
constexpr uint8_t kLongSelector = 0x10;
constexpr uint8_t kUcs2 = 0x11;
constexpr uint8_t kFirstDoubleByteTable = 0x12;
constexpr uint8_t kLastDoubleByteTable = 0x14;
constexpr uint8_t kUtf8 = 0x15;
constexpr uint8_t kFirstPrintable = 0x20;

uint8_t byteAt(const std::string& text, size_t index) {
  return static_cast<uint8_t>(text[index]);
}

size_t selectorSize(uint8_t first) {
  if (first >= kFirstPrintable) {
    return 0;
  }
  return first == kLongSelector ? 3 : 1;
}

size_t utf8CharacterSize(uint8_t lead) {
  if (lead < 0xC0) {
    return 1;
  }
  if (lead < 0xE0) {
    return 2;
  }
  return lead < 0xF0 ? 3 : 4;
}

/** Size of the character that begins with `lead` in the table that `selector` names. */
size_t characterSize(uint8_t selector, uint8_t lead) {
  if (selector >= kFirstPrintable) {
    return lead >= 0xC1 && lead <= 0xCF ? 2 : 1;  // ISO/IEC 6937: a diacritic and its letter
  }
  if (selector == kUcs2) {
    return 2;
  }
  if (selector >= kFirstDoubleByteTable && selector <= kLastDoubleByteTable) {
    return lead >= 0x80 ? 2 : 1;
  }
  return selector == kUtf8 ? utf8CharacterSize(lead) : 1;
}

}  // namespace

std::string cutDvbText(const std::string& text, size_t maxSize) {
  if (text.size() <= maxSize) {
    return text;
  }
  const uint8_t selector = byteAt(text, 0);
  size_t end = selectorSize(selector);
  size_t fitting = 0;
  while (end <= maxSize) {
    fitting = end;
    end += characterSize(selector, byteAt(text, end));
  }
  return text.substr(0, fitting);
}

}  // namespace tevra
