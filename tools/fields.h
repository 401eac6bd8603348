#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace tevra::tools {

/**
 * What a table or a descriptor says, decoded once, for every way of printing it: an ordered list of
 * named values. Names are camelCase as in the records ("streamType"); texts are UTF-8.
 */
struct Field;
using Fields = std::vector<Field>;

/** `shown` is the number as people read it; `meaning` is empty where the standard names none. */
struct Number {
  int64_t value = 0;
  std::string shown;
  std::string meaning;
};

struct Flag {
  bool value = false;
  std::string shown;
};

/** Quoted where it stands in the stream as text, else made from numbers: a time, a language. */
struct Text {
  std::string utf8;
  bool quoted = true;
};

/** Bytes without a meaning of their own. */
struct Bytes {
  std::string data;
};

/** A loop: each entry is a list of fields. */
struct List {
  std::vector<Fields> entries;
};

/** `problem` is empty unless the payload contradicts the descriptor's syntax. */
struct DescriptorFields {
  int tag = 0;
  std::string name;
  std::string payload;
  bool isDecoded = false;
  Fields fields;
  std::string problem;
};

struct DescriptorLoop {
  std::vector<DescriptorFields> entries;
};

struct Field {
  std::string name;
  std::variant<Number, Flag, Text, Bytes, List, DescriptorLoop> value;
  /** Whether people need the name to understand the value. */
  bool isLabelled = true;
};

/** A table_id, identifier or PID in decimal and hexadecimal: "257 (0x0101)". */
[[nodiscard]] Field idField(const std::string& name, int value);
[[nodiscard]] Field decimalField(const std::string& name, int64_t value);
/** "0x1B", with the meaning if there is one. */
[[nodiscard]] Field codeField(const std::string& name, int value, const std::string& meaning = {});
[[nodiscard]] Field flagField(const std::string& name, bool value);
/** A flag that is shown as one of two words instead of its name. */
[[nodiscard]] Field wordField(const std::string& name, bool value, const std::string& ifSet,
                              const std::string& ifNot);
/** A text that is made from numbers, such as a time. */
[[nodiscard]] Field plainField(const std::string& name, const std::string& text);

/** A field's name in words: "PCR PID" for "pcrPid". */
[[nodiscard]] std::string labelOf(const std::string& name);

}  // namespace tevra::tools
