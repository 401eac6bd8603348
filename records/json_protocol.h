#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <thrift/protocol/TJSONProtocol.h>
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
 * Thrift's JSON protocol, safe against what a damaged or hostile file may hold.
 *
 * Writing is the library's own. Reading differs in three places, all of which raise
 * TProtocolException here. The library aborts the process on a byte above 255. It allocates
 * whatever a container header claims before it reads the first element. And it takes an integer
 * that overflows for the greatest there is, and one without digits for whatever lies on its stack:
 * here every integer, be it a value, a map's key, a field's id or a container's size, is taken from
 * the text once the library has passed over it.
 */
class JsonProtocol
    : public apache::thrift::protocol::TVirtualProtocol<JsonProtocol,
                                                        apache::thrift::protocol::TJSONProtocol> {
 public:
  /**
   * Reads what `text` holds by now, or writes to it. No container has more elements than there are
   * bytes to read, nor are there more records than this text has room for as a save writes them:
   * what was saved is read, and whatever a text claims, its records take less than eleven times
   * its size of memory.
   */
  explicit JsonProtocol(const std::shared_ptr<apache::thrift::transport::TMemoryBuffer>& text);

  using TJSONProtocol::readBool;  // the form for std::vector<bool>

  /** A number of 16 bits; any but 0 is true. Returns the bytes read. */
  uint32_t readBool(bool& value);

  /** Raises INVALID_DATA for a number outside of -128 to 255. Returns the bytes read. */
  uint32_t readByte(int8_t& byte);

  ///@{
  /** Raise INVALID_DATA for a number without digits or beyond the type. Return the bytes read. */
  uint32_t readI16(int16_t& value);
  uint32_t readI32(int32_t& value);
  uint32_t readI64(int64_t& value);
  ///@}

  /** `id` is 0 at least, and left alone when `type` is T_STOP. Returns the bytes read. */
  uint32_t readFieldBegin(std::string& name, apache::thrift::protocol::TType& type, int16_t& id);

  ///@{
  /** Raise SIZE_LIMIT for more than the text has room for. Return the bytes read. */
  uint32_t readStructBegin(std::string& name);
  uint32_t readMapBegin(apache::thrift::protocol::TType& keyType,
                        apache::thrift::protocol::TType& valueType, uint32_t& size);
  uint32_t readListBegin(apache::thrift::protocol::TType& elementType, uint32_t& size);
  uint32_t readSetBegin(apache::thrift::protocol::TType& elementType, uint32_t& size);
  ///@}

 private:
  template <class Integer>
  uint32_t readInteger(Integer& value, uint32_t (TJSONProtocol::*read)(Integer&));

  [[nodiscard]] const char* position() const;
  [[nodiscard]] std::string_view passedSince(const char* start, size_t charactersBehind) const;
  void checkSize(uint32_t size) const;
  void checkRecords(uint32_t more) const;

  const std::shared_ptr<apache::thrift::transport::TMemoryBuffer> text_;
  const uint32_t textSize_;
  uint64_t records_ = 0;  // begun
};

}  // namespace tevra
