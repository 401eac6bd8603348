#pragma once

#include <cstdint>
#include <string>

/** Messages of the binary protocol, byte by byte. */
namespace tevra::test {

/** A call of `method` with an empty argument struct. */
[[nodiscard]] std::string callMessage(const std::string& method);

/** The same as clients before the versioned header write it. */
[[nodiscard]] std::string unversionedCallMessage(const std::string& method);

/** A setPAT of under 50 bytes whose programme list claims `size` elements and holds one. */
[[nodiscard]] std::string hugeListMessage(int32_t size);

/** `message` after its length: what goes over TCP. */
[[nodiscard]] std::string framed(const std::string& message);

/** Four bytes, the most significant first: alone, the head of a frame of that size. */
[[nodiscard]] std::string bigEndian(uint32_t value);

}  // namespace tevra::test
