#pragma once

#include <cstddef>
#include <string>
#include <vector>

/** What clients send, byte by byte, so that it can be spoilt at a known place. */
namespace tevra::test {

/** A field: from its type byte to the end of its value. */
struct FieldPlace {
  size_t begin;
  size_t end;
};

/** A call as a client writes it, with the offsets of its parts. */
struct RecordedCall {
  std::string method;
  std::string message;               ///< without the frame's length
  std::vector<FieldPlace> fields;    ///< of all structures, inner before outer
  std::vector<size_t> sizes;         ///< four-byte sizes of strings, lists and maps
  std::vector<size_t> elementTypes;  ///< of lists and maps
};

/** One call of each method, with every kind of list, map and string somewhere filled. */
[[nodiscard]] const std::vector<RecordedCall>& everyCall();

/** The one of `method`. */
[[nodiscard]] const RecordedCall& recordedCall(const std::string& method);

/** A versioned message of `type` up to its argument structure, with sequence id 7. */
[[nodiscard]] std::string messageHead(const std::string& method, int type = 1);

/** A field's type and id. */
[[nodiscard]] std::string fieldHead(int type, int id);

/** A field of the type with the smallest value that it can have, nothing in it. */
[[nodiscard]] std::string emptyField(int type, int id);

/** The types that a field may have. */
[[nodiscard]] const std::vector<int>& fieldTypes();

/** `message` with `bytes` written over what stands at `offset`. */
[[nodiscard]] std::string withBytes(std::string message, size_t offset, const std::string& bytes);

}  // namespace tevra::test
