#include "tools/report/page/markup.h"

#include <algorithm>
#include <cstdint>

#include "tools/text/dvb_text.h"

namespace tevra::tools::report {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

/** How many bytes the character has that begins with `lead`, in valid UTF-8. */
size_t sizeOf(unsigned char lead) {
  return lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

uint32_t codePoint(std::string_view character) {
  if (character.size() == 1) {
    return static_cast<unsigned char>(character[0]);
  }
  uint32_t value = static_cast<unsigned char>(character[0]) & (0xFFU >> (character.size() + 1));
  for (size_t i = 1; i < character.size(); ++i) {
    value = (value << 6) | (static_cast<unsigned char>(character[i]) & 0x3FU);
  }
  return value;
}

/** Of what printable() leaves. */
bool isUnfit(uint32_t code) {
  const bool reorders = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  const bool isNoncharacter = (code & 0xFFFE) == 0xFFFE || (code >= 0xFDD0 && code <= 0xFDEF);
  return reorders || isNoncharacter;
}

std::string_view entityOf(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

void appendLine(std::string_view line, std::string& out) {
  const std::string printed = printable(std::string(line));
  const std::string_view valid = printed;
  for (size_t at = 0; at < valid.size();) {
    const std::string_view character =
        valid.substr(at, sizeOf(static_cast<unsigned char>(valid[at])));
    const std::string_view entity = entityOf(character[0]);
    if (!entity.empty()) {
      out += entity;
    } else {
      out += isUnfit(codePoint(character)) ? kReplacement : character;
    }
    at += character.size();
  }
}

}  // namespace

std::string escaped(std::string_view utf8) {
  std::string out;
  for (size_t start = 0; start <= utf8.size();) {
    const size_t end = std::min(utf8.find('\n', start), utf8.size());
    appendLine(utf8.substr(start, end - start), out);
    out += end < utf8.size() ? "\n" : "";
    start = end + 1;
  }
  return out;
}

Markup::Element Markup::open(std::string_view name, const Attributes& attributes) {
  begin(name, attributes);
  return {*this, name};
}

Markup::Element Markup::scroller(const std::string& label) {
  return open(
      "div", {{"class", "scroller"}, {"tabindex", "0"}, {"role", "region"}, {"aria-label", label}});
}

void Markup::leaf(std::string_view name, const Attributes& attributes, std::string_view text) {
  begin(name, attributes);
  out_ += escaped(text);
  end(name);
}

void Markup::mark(std::string_view name, const Attributes& attributes) {
  begin(name, attributes);
  out_.back() = '/';
  out_ += '>';
}

void Markup::text(std::string_view utf8) {
  out_ += escaped(utf8);
}

void Markup::begin(std::string_view name, const Attributes& attributes) {
  out_ += '<';
  out_ += name;
  for (const auto& [key, value] : attributes) {
    out_ += ' ';
    out_ += key;
    out_ += "=\"" + escaped(value) + "\"";
  }
  out_ += '>';
}

void Markup::end(std::string_view name) {
  out_ += "</";
  out_ += name;
  out_ += ">\n";
}

}  // namespace tevra::tools::report
