#include "tools/descriptors/field_reader.h"

#include <utility>

#include "tools/text/dvb_text.h"
#include "tools/text/words.h"

namespace tevra::tools {

FieldReader::FieldReader(const std::string& payload)
    : payload_(payload), end_(8 * payload.size()) {}

uint64_t FieldReader::bits(int count) {
  if (hasFailed() || static_cast<size_t>(count) > end_ - position_) {
    fail("shorter than its syntax demands");
    return 0;
  }
  uint64_t value = 0;
  for (int i = 0; i < count; ++i, ++position_) {
    const auto byte = static_cast<unsigned char>(payload_[position_ / 8]);
    value = (value << 1) | ((byte >> (7 - position_ % 8)) & 1U);
  }
  return value;
}

void FieldReader::number(const std::string& name, int bitCount) {
  keep(decimalField(name, static_cast<int64_t>(bits(bitCount))));
}

void FieldReader::id(const std::string& name, int bitCount) {
  keep(idField(name, static_cast<int>(bits(bitCount))));
}

int64_t FieldReader::code(const std::string& name, int bitCount, NameOf nameOf) {
  const auto value = static_cast<int64_t>(bits(bitCount));
  Number number = {value, hex(value, (bitCount + 3) / 4), {}};
  if (nameOf != nullptr) {
    number.meaning = nameOf(static_cast<int>(value));
  }
  keep({name, number});
  return value;
}

int FieldReader::choice(const std::string& name, int bitCount, NameOf nameOf) {
  const auto value = static_cast<int>(bits(bitCount));
  keep(decimalField(name, value, nameOf(value)));
  return value;
}

void FieldReader::fourCharacters(const std::string& name) {
  Number number;
  number.value = static_cast<int64_t>(bits(32));
  number.shown = hex(number.value, 8);
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto c = static_cast<char>((number.value >> shift) & 0xFF);
    number.meaning += c >= 0x20 && c < 0x7F ? c : '.';
  }
  keep({name, std::move(number)});
}

void FieldReader::word(const std::string& name, const std::string& ifSet,
                       const std::string& ifNot) {
  keep(wordField(name, bits(1) != 0, ifSet, ifNot));
}

bool FieldReader::flag(const std::string& name) {
  const bool value = bits(1) != 0;
  keep(flagField(name, value));
  return value;
}

void FieldReader::letters(const std::string& name) {
  keep(plainField(name, printable(take(3))));
}

void FieldReader::text(const std::string& name, size_t size) {
  keep({name, Text{utf8FromDvbText(take(size))}});
}

void FieldReader::countedText(const std::string& name) {
  text(name, static_cast<size_t>(bits(8)));
}

void FieldReader::bytes(const std::string& name, size_t size) {
  keep({name, Bytes{take(size)}});
}

void FieldReader::rest(const std::string& name) {
  if (left() > 0) {
    bytes(name, left());
  }
}

void FieldReader::decimalDigits(const std::string& name, int digits, int64_t factor,
                                const std::function<std::string(int64_t)>& shown) {
  int64_t value = 0;
  for (int i = 0; i < digits; ++i) {
    const auto digit = static_cast<int64_t>(bits(4));
    if (digit > 9) {
      fail("has a decimal digit over 9 in its " + labelOf(name));
    }
    value = 10 * value + digit;
  }
  keep({name, Number{value * factor, shown(value * factor), {}}});
}

void FieldReader::keep(Field field) {
  current_->push_back(std::move(field));
}

void FieldReader::list(const std::string& name, const std::function<void()>& entry) {
  Fields* const outer = current_;
  List list;
  while (!hasFailed() && position_ < end_) {
    current_ = &list.entries.emplace_back();
    entry();
  }
  current_ = outer;
  keep({name, std::move(list)});
}

void FieldReader::listWithin(const std::string& name, size_t size,
                             const std::function<void()>& entry) {
  if (size > left()) {
    fail("has a loop longer than itself");
    return;
  }
  const size_t end = std::exchange(end_, position_ + 8 * size);
  list(name, entry);
  end_ = end;
}

void FieldReader::fail(const std::string& reason) {
  if (!hasFailed()) {
    problem_ = reason;
  }
}

Fields FieldReader::takeFields() {
  return std::move(fields_);
}

std::string FieldReader::take(size_t size) {
  if (size > left()) {
    fail("shorter than its syntax demands");
    return {};
  }
  const size_t start = position_ / 8;
  position_ += 8 * size;
  return payload_.substr(start, size);
}

}  // namespace tevra::tools
