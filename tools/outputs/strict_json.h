#pragma once

#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>

namespace tevra::tools {

/** What is wrong with a text that should be JSON, and where; one line. */
class StrictJsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/**
 * Reads a JSON text (RFC 8259). A name that comes twice in one object, of which the library would
 * keep the last, is an error. Raises StrictJsonError.
 */
[[nodiscard]] nlohmann::json parseStrictJson(const std::string& text);

}  // namespace tevra::tools
