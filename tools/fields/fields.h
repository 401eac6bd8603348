#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tevra::tools {

struct Field;

/**
 * What a table or a descriptor says, decoded once, for every way of printing it: an ordered list of
 * named values. Names are camelCase as in the records ("streamType"); texts are UTF-8.
 */
using Fields = std::vector<Field>;

/** A quantity, an identifier or a code. */
struct Number {
  int64_t value = 0;    ///< as it stands in the stream, or in the unit of the field
  std::string shown;    ///< as people read it
  std::string meaning;  ///< empty where the standard names none
};

/** One bit. */
struct Flag {
  bool value = false;  ///< the bit
  std::string shown;   ///< "yes" or "no", or a word for each
};

/** Quoted where it stands in the stream as text, else made from numbers: a time, a language. */
struct Text {
  std::string utf8;    ///< without control characters of DVB text
  bool quoted = true;  ///< whether it is a text of the stream
};

/** A time that moves from one version of a table to the next. */
struct Time {
  std::string shown;               ///< "2024-05-17 12:45:00 UTC", "undefined"
  std::optional<int64_t> seconds;  ///< all from one day; nothing of a time that is none
};

/** Bytes without a meaning of their own. */
struct Bytes {
  std::string data;  ///< as they stand in the stream
};

/** A loop: each entry is a list of fields. */
struct List {
  std::vector<Fields> entries;  ///< in the order of the stream
};

/** One descriptor. */
struct DescriptorFields {
  int tag = 0;             ///< descriptor_tag
  std::string name;        ///< the standard's, "service_descriptor"
  std::string payload;     ///< behind tag and length
  bool isDecoded = false;  ///< whether `fields` says all that the payload does
  Fields fields;           ///< empty unless it is decoded
  std::string problem;     ///< empty unless the payload contradicts the descriptor's syntax
};

/** A loop of descriptors, in order. */
struct DescriptorLoop {
  std::vector<DescriptorFields> entries;  ///< in the order of the stream
};

/** A named value of a table or descriptor. */
struct Field {
  std::string name;  ///< camelCase, as the JSON has it
  /** What the field holds. */
  std::variant<Number, Flag, Text, Time, Bytes, List, DescriptorLoop> value;
  /** Whether people need the name to understand the value. */
  bool isLabelled = true;
};

///@{
/**
 * Equality and an order by what stands in the stream, however it is shown: a field's name and
 * value, a descriptor's tag and payload.
 */
[[nodiscard]] bool operator==(const Field& a, const Field& b);
[[nodiscard]] bool operator<(const Field& a, const Field& b);
[[nodiscard]] bool operator==(const DescriptorFields& a, const DescriptorFields& b);
[[nodiscard]] bool operator<(const DescriptorFields& a, const DescriptorFields& b);
///@}

///@{
/** A number with its meaning, if there is one: an identifier or PID as idText has it, a quantity or
 * small code in decimal, a code as "0x1B". */
[[nodiscard]] Field idField(const std::string& name, int value, const std::string& meaning = {});
[[nodiscard]] Field decimalField(const std::string& name, int64_t value,
                                 const std::string& meaning = {});
[[nodiscard]] Field codeField(const std::string& name, int value, const std::string& meaning = {});
///@}
/** Shown as "yes" or "no". */
[[nodiscard]] Field flagField(const std::string& name, bool value);
/** A flag that is shown as one of two words instead of its name. */
[[nodiscard]] Field wordField(const std::string& name, bool value, const std::string& ifSet,
                              const std::string& ifNot);
/** A text that is made from numbers, such as a time. */
[[nodiscard]] Field plainField(const std::string& name, const std::string& text);

/** A field's name in words: "PCR PID" for "pcrPid". */
[[nodiscard]] std::string labelOf(const std::string& name);

}  // namespace tevra::tools
