#include "platform/host/character_converter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tevra::host {
namespace {

static_assert(sizeof(wchar_t) == 4, "wide characters have to hold code points");

/** iconv_open(3) fails with -1, a pointer by its type. */
bool isOpen(iconv_t descriptor) {
  return reinterpret_cast<intptr_t>(descriptor) != -1;
}

/** The most that one byte of input can grow to: UTF-8 to wide characters. */
constexpr size_t kGrowth = sizeof(wchar_t);

bool isScalarValue(wchar_t codePoint) {
  const auto value = static_cast<char32_t>(codePoint);
  return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

}  // namespace

CharacterConverter::CharacterConverter(const char* to, const char* from)
    : descriptor_(iconv_open(to, from)) {}

CharacterConverter::~CharacterConverter() {
  if (isOpen(descriptor_)) {
    iconv_close(descriptor_);
  }
}

std::optional<std::string> CharacterConverter::convert(const std::string& input) {
  if (!isOpen(descriptor_)) {
    return std::nullopt;
  }
  std::string output(input.size() * kGrowth, '\0');
  char* from = const_cast<char*>(input.data());  // iconv only reads through it.
  size_t fromLeft = input.size();
  char* to = output.data();
  size_t toLeft = output.size();
  (void)iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);  // Resetting cannot fail.
  // Anything but 0 is a failure, or a character that would not come back.
  if (iconv(descriptor_, &from, &fromLeft, &to, &toLeft) != 0) {
    return std::nullopt;
  }
  output.resize(output.size() - toLeft);
  return output;
}

std::optional<std::wstring> CharacterDecoder::decode(const std::string& input) {
  const std::optional<std::string> bytes = converter_.convert(input);
  if (!bytes) {
    return std::nullopt;
  }
  std::wstring text(bytes->size() / sizeof(wchar_t), L'\0');
  std::memcpy(text.data(), bytes->data(), bytes->size());
  // Of UTF-8, iconv lets the codes beyond Unicode through.
  if (!std::all_of(text.begin(), text.end(), isScalarValue)) {
    return std::nullopt;
  }
  return text;
}

std::string utf8FromCodePoints(const std::wstring& text) {
  const std::string bytes(reinterpret_cast<const char*>(text.data()),
                          text.size() * sizeof(wchar_t));
  // UTF-8 has every code point, and iconv has UTF-8 built in.
  return CharacterConverter("UTF-8", "WCHAR_T").convert(bytes).value();
}

}  // namespace tevra::host
