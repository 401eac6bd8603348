#pragma once

#include <string>
#include <vector>

#include "tools/outputs/output_request.h"

namespace tevra::tools {

/**
 * The name of the file for an output, in which {service} stands for the input service id, {gsid}
 * for the global service id, {sid} for the output service id and {name} for the output service name
 * as safeFileName makes it; {{ stands for a brace.
 */
class OutputPattern {
 public:
  /** Of no text: the file's name is empty. */
  OutputPattern() = default;
  /** Raises UsageError for a placeholder that there is not. */
  explicit OutputPattern(const std::string& text);

  /** As it was written. */
  [[nodiscard]] const std::string& text() const { return text_; }
  /** Without any, all outputs have the same file. */
  [[nodiscard]] bool hasPlaceholder() const;
  /** Whether it has this one, named without braces. */
  [[nodiscard]] bool uses(const std::string& placeholder) const;

  /** A path as the pattern gives it; whether it can be written is not looked at. */
  [[nodiscard]] std::string fileFor(const OutputOptions& output) const;

 private:
  struct Part {
    bool isPlaceholder;
    std::string text;
  };

  void readBrace(size_t& at);
  void add(char c);

  std::string text_;
  std::vector<Part> parts_;
};

/**
 * The files or addresses of outputs, in their order. Raises UsageError when one is `input`, or two
 * are the same, and ToolError when input or output is to be an address and is none.
 */
[[nodiscard]] std::vector<std::string> filesFor(const OutputPattern& pattern,
                                                const std::vector<OutputOptions>& outputs,
                                                const std::string& input);

/**
 * A service name as a part of a file name: letters, digits, ".", "-", "+" and what is no ASCII
 * stay, all else becomes "_", as does what makes a file hidden or an option; at most 100 bytes.
 */
[[nodiscard]] std::string safeFileName(const std::string& utf8);

}  // namespace tevra::tools
