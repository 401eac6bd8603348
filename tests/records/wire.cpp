#include "tests/records/wire.h"

#include <stdexcept>

namespace tevra::test {
namespace {

/** Walks over the binary protocol: big-endian numbers, 32-bit lengths, types of one byte. */
class WireReader {
 public:
  explicit WireReader(const std::string& bytes) : bytes_(bytes) {}

  std::vector<WireField> fields() {
    std::vector<WireField> fields;
    for (size_t start = position_; const uint8_t type = byte(); start = position_) {
      WireField& field = fields.emplace_back();
      field.id = static_cast<int16_t>(number(2));
      field.type = value(type);
      field.bytes = bytes_.substr(start, position_ - start);
    }
    return fields;
  }

  [[nodiscard]] bool atEnd() const { return position_ == bytes_.size(); }

 private:
  uint8_t byte() { return static_cast<uint8_t>(take(1)[0]); }

  uint32_t number(size_t size) {
    uint32_t number = 0;
    for (const char byte : take(size)) {
      number = number << 8 | static_cast<uint8_t>(byte);
    }
    return number;
  }

  std::string take(size_t size) {
    if (size > bytes_.size() - position_) {
      throw std::runtime_error("the struct ends too early");
    }
    position_ += size;
    return bytes_.substr(position_ - size, size);
  }

  std::string scalar(size_t size, const char* name) {
    take(size);
    return name;
  }

  /** Passes over a value; returns the name of its type. */
  std::string value(uint8_t type) {
    switch (type) {
      case 2:
        return scalar(1, "bool");
      case 6:
        return scalar(2, "i16");
      case 8:
        return scalar(4, "i32");
      case 10:
        return scalar(8, "i64");
      case 11:
        return scalar(number(4), "string");
      case 12:
        fields();
        return "struct";
      case 13:
        return map();
      case 15:
        return list();
      default:
        throw std::runtime_error("type " + std::to_string(type));
    }
  }

  std::string list() {
    const uint8_t elementType = byte();
    std::string element = "?";
    for (uint32_t left = number(4); left > 0; --left) {
      element = value(elementType);
    }
    return "list<" + element + ">";
  }

  std::string map() {
    const uint8_t keyType = byte();
    const uint8_t valueType = byte();
    std::string key = "?";
    std::string element = "?";
    for (uint32_t left = number(4); left > 0; --left) {
      key = value(keyType);
      element = value(valueType);
    }
    return "map<" + key + "," + element + ">";
  }

  const std::string& bytes_;
  size_t position_ = 0;
};

}  // namespace

std::vector<WireField> wireFields(const std::string& bytes) {
  WireReader reader(bytes);
  std::vector<WireField> fields = reader.fields();
  if (!reader.atEnd()) {
    throw std::runtime_error("bytes after the struct");
  }
  return fields;
}

std::string wireTypes(const std::vector<WireField>& fields) {
  std::string types;
  for (const WireField& field : fields) {
    types += (types.empty() ? "" : " ") + field.type;
  }
  return types;
}

}  // namespace tevra::test
