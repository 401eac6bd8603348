#include "tools/text/dvb_text.h"

#include <array>
#include <cstdint>
#include <utility>

#include <iconv.h>

namespace tevra::tools {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";
constexpr const char* kEuro = "\xE2\x82\xAC";
constexpr unsigned char kEuroInTable00 = 0xA4;
constexpr unsigned char kLineBreak = 0x8A;

/** A conversion to UTF-8 that never fails. */
class Utf8Converter {
 public:
  explicit Utf8Converter(const char* from) : descriptor_(iconv_open("UTF-8", from)) {}
  ~Utf8Converter() {
    if (isOpen()) {
      iconv_close(descriptor_);
    }
  }
  Utf8Converter(const Utf8Converter&) = delete;
  Utf8Converter& operator=(const Utf8Converter&) = delete;

  [[nodiscard]] std::string convert(std::string text) const {
    std::string result;
    char* input = text.data();
    size_t inputLeft = text.size();
    while (inputLeft > 0) {
      std::array<char, 256> buffer;
      char* output = buffer.data();
      size_t outputLeft = buffer.size();
      const bool stuck = !isOpen() || (iconv(descriptor_, &input, &inputLeft, &output,
                                             &outputLeft) == static_cast<size_t>(-1) &&
                                       output == buffer.data());
      result.append(buffer.data(), buffer.size() - outputLeft);
      if (stuck) {
        result += kReplacement;
        ++input;
        --inputLeft;
      }
    }
    return result;
  }

 private:
  // iconv_open returns an invalid pointer, not null, for a character set that it does not have.
  [[nodiscard]] bool isOpen() const { return reinterpret_cast<intptr_t>(descriptor_) != -1; }

  iconv_t descriptor_;
};

/** A character table and where the text in it starts. */
struct Table {
  std::string iconvName;
  size_t start;
  bool singleByte;
};

Table tableOf(const std::string& text) {
  const auto selector = static_cast<unsigned char>(text[0]);
  if (selector >= 0x20) {
    return {"ISO6937", 0, true};
  }
  if (selector >= 0x01 && selector <= 0x0B) {
    return {"ISO-8859-" + std::to_string(selector + 4), 1, true};
  }
  if (selector == 0x10 && text.size() >= 3) {
    return {"ISO-8859-" + std::to_string(static_cast<unsigned char>(text[2])), 3, true};
  }
  switch (selector) {
    case 0x11:
      return {"UCS-2BE", 1, false};
    case 0x12:
      return {"EUC-KR", 1, false};
    case 0x13:
      return {"GB2312", 1, false};
    case 0x14:
      return {"BIG5", 1, false};
    case 0x15:
      return {"UTF-8", 1, false};
    default:
      return {"none", 1, true};
  }
}

/**
 * Takes the control codes out of a text in a single-byte table and converts the rest piece by
 * piece.
 */
std::string convertSingleByte(const std::string& text, const Table& table) {
  const Utf8Converter converter(table.iconvName.c_str());
  const bool isTable00 = table.start == 0;
  std::string result;
  std::string piece;
  for (size_t i = table.start; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool isControl = byte < 0x20 || (byte >= 0x7F && byte <= 0x9F);
    const bool isEuro = isTable00 && byte == kEuroInTable00;
    if (!isControl && !isEuro) {
      piece += text[i];
      continue;
    }
    result += converter.convert(std::move(piece));
    piece.clear();
    result += isEuro ? kEuro : byte == kLineBreak ? " " : "";
  }
  return result + converter.convert(std::move(piece));
}

/** The text with `replacement` for each C0 control, DEL and, in two bytes, C1 control. */
std::string withoutControls(const std::string& utf8, const std::string& replacement) {
  std::string result;
  for (size_t i = 0; i < utf8.size(); ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    const bool isC1 =
        byte == 0xC2 && i + 1 < utf8.size() && static_cast<unsigned char>(utf8[i + 1]) <= 0x9F;
    if (byte < 0x20 || byte == 0x7F || isC1) {
      result += replacement;
      i += isC1 ? 1 : 0;
    } else {
      result += utf8[i];
    }
  }
  return result;
}

/** Leaves out the control codes as the other tables have them, U+E080 to U+E09F. */
std::string withoutControlCodes(const std::string& utf8) {
  std::string result;
  for (size_t i = 0; i < utf8.size(); ++i) {
    const bool isControl = utf8.compare(i, 2, "\xEE\x82") == 0 && i + 2 < utf8.size() &&
                           static_cast<unsigned char>(utf8[i + 2]) <= 0x9F;
    if (isControl) {
      result += static_cast<unsigned char>(utf8[i + 2]) == kLineBreak ? " " : "";
      i += 2;
    } else {
      result += utf8[i];
    }
  }
  return result;
}

}  // namespace

std::string utf8FromDvbText(const std::string& text) {
  if (text.empty()) {
    return {};
  }
  const Table table = tableOf(text);
  if (table.singleByte) {
    return convertSingleByte(text, table);
  }
  const Utf8Converter converter(table.iconvName.c_str());
  return withoutControls(withoutControlCodes(converter.convert(text.substr(table.start))), "");
}

bool isUtf8(const std::string& text) {
  return Utf8Converter("UTF-8").convert(text) == text;
}

std::string printable(const std::string& text) {
  return withoutControls(Utf8Converter("UTF-8").convert(text), kReplacement);
}

}  // namespace tevra::tools
