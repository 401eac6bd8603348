#pragma once

#include <cstdint>
#include <memory>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/protocol/TVirtualProtocol.h>

namespace tevra {

/** Many times what a file holds; an empty record takes a few bytes of it but a hundred of memory.
 */
inline constexpr uint64_t kMaxElementsPerFile = uint64_t{1024} * 1024;

/**
 * Thrift's JSON protocol, safe against what a damaged or hostile file may hold.
 *
 * Writing is the library's own. Reading differs in three places. The library aborts the process on
 * a byte above 255, and it allocates whatever a container header claims before it reads the first
 * element: here both raise TProtocolException. It also takes a number without digits for success
 * and returns whatever lies on its stack: an integer may then have any value, but a bool is one.
 */
class JsonProtocol
    : public apache::thrift::protocol::TVirtualProtocol<JsonProtocol,
                                                        apache::thrift::protocol::TJSONProtocol> {
 public:
  /**
   * `inputSize`: bytes that the transport can yield at most. All containers together cannot have
   * more elements, and not more than kMaxElementsPerFile.
   */
  JsonProtocol(const std::shared_ptr<apache::thrift::transport::TTransport>& transport,
               uint64_t inputSize);

  using TJSONProtocol::readBool;  // the form for std::vector<bool>

  /** A number other than 0 is true. Returns the bytes read. */
  uint32_t readBool(bool& value);

  /** Raises INVALID_DATA for a number outside of -128 to 255. Returns the bytes read. */
  uint32_t readByte(int8_t& byte);

  ///@{
  /** Counts `size` against what the file may have; SIZE_LIMIT beyond. Returns the bytes read. */
  uint32_t readMapBegin(apache::thrift::protocol::TType& keyType,
                        apache::thrift::protocol::TType& valueType, uint32_t& size);
  uint32_t readListBegin(apache::thrift::protocol::TType& elementType, uint32_t& size);
  uint32_t readSetBegin(apache::thrift::protocol::TType& elementType, uint32_t& size);
  ///@}

 private:
  void countElements(uint32_t size);

  uint64_t elementsLeft_;
};

}  // namespace tevra
