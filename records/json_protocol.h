#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <thrift/protocol/TVirtualProtocol.h>
#include <thrift/transport/TBufferTransports.h>

namespace tevra {

/**
 * The least text that a record takes as it is saved, with all its members: that of a PATProgram. A
 * hostile one is read from two bytes, but takes up to 264 of memory all the same.
 */
inline constexpr uint32_t kSmallestRecord = 29;

/** Texts below this many bytes may have as many records as a text of it. */
inline constexpr uint32_t kSmallText = 64 * 1024;

/**
 * Reads what Thrift's TJSONProtocol writes, straight from memory, and safe against what a damaged
 * or hostile file may hold. It does not write.
 *
 * What the library reads gives the same values here, and what it refuses is refused. So is what it
 * takes for success, or worse: an integer without digits, with a plus or beyond its type, be it a
 * value, a map's key, a field's id or a container's size; a byte above 255; a container that claims
 * more than the text has room for; base64 of nothing but padding; and an escaped character beyond
 * ASCII, which nothing writes. All raise TProtocolException; where the text ends too early,
 * TTransportException.
 */
class JsonProtocol : public apache::thrift::protocol::TVirtualProtocol<JsonProtocol> {
 public:
  /**
   * Reads the one value that `text` holds by now. No container has more elements than there are
   * bytes to read, nor are there more records than this text has room for as a save writes them:
   * what was saved is read, and whatever a text claims, its records take less than eleven times
   * its size of memory.
   */
  explicit JsonProtocol(const std::shared_ptr<apache::thrift::transport::TMemoryBuffer>& text);

  using Type = apache::thrift::protocol::TType;  ///< of a value
  using TVirtualProtocol::readBool;              // the form for std::vector<bool>

  ///@{
  /**
   * What generated code calls. Each returns 0, not the bytes read, which nobody asks for. Names
   * are none, and a field's `id` is left alone when its `type` is T_STOP. A bool is a number of 16
   * bits, any but 0 being true; a byte is one of -128 to 255; a double, which no record has, may
   * stand in quotes anywhere.
   */
  uint32_t readStructBegin(std::string& name);
  uint32_t readStructEnd() { return end("}"); }
  uint32_t readFieldBegin(std::string& name, Type& type, int16_t& id);
  uint32_t readFieldEnd() { return end("}"); }
  uint32_t readMapBegin(Type& keyType, Type& valueType, uint32_t& size);
  uint32_t readMapEnd() { return end("}]"); }
  uint32_t readListBegin(Type& elementType, uint32_t& size);
  uint32_t readListEnd() { return end("]"); }
  uint32_t readSetBegin(Type& elementType, uint32_t& size) {
    return readListBegin(elementType, size);
  }
  uint32_t readSetEnd() { return readListEnd(); }
  uint32_t readBool(bool& value);
  uint32_t readByte(int8_t& byte);
  uint32_t readI16(int16_t& value) { return readNumber(value); }
  uint32_t readI32(int32_t& value) { return readNumber(value); }
  uint32_t readI64(int64_t& value) { return readNumber(value); }
  uint32_t readDouble(double& value) { return readNumber(value); }
  uint32_t readBinary(std::string& bytes);
  ///@}

 private:
  /** An object or array that has begun, and not ended. */
  struct Container {
    bool isObject;
    char separator;  ///< before what comes next; 0: nothing, it is the first
  };

  [[nodiscard]] char peek() const;
  size_t takeOneOf(std::string_view characters);
  void take(char expected) { (void)takeOneOf({&expected, 1}); }
  bool separate();
  uint32_t begin(char bracket);
  uint32_t end(std::string_view brackets);
  template <class Number>
  uint32_t readNumber(Number& value);
  void readSize(uint32_t& size);
  void checkRecords(uint32_t more) const;
  uint32_t readType(Type& type);
  std::string takeText();
  char takeEscaped();

  const char* at_ = nullptr;  ///< what comes next, up to end_
  const char* end_ = nullptr;
  const uint32_t textSize_;
  uint64_t records_ = 0;  ///< begun
  std::vector<Container> open_;
};

}  // namespace tevra
