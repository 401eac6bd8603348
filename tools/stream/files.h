#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "tools/stream/byte_source.h"

namespace tevra::tools {

/** A file that is read from front to end; "-" is standard input. */
class InputFile : public ByteSource {
 public:
  /** Raises ToolError when the file cannot be opened. */
  explicit InputFile(const std::string& path);

  [[nodiscard]] size_t read(uint8_t* buffer, size_t size) override;
  /** Of a regular file alone. */
  [[nodiscard]] std::optional<uint64_t> size() const override;
  [[nodiscard]] bool rewind() override;

 private:
  struct Close {
    void operator()(std::FILE* file) const;
  };

  std::string path_;
  std::unique_ptr<std::FILE, Close> file_;
};

/** Whether both paths lead to the same existing file. */
[[nodiscard]] bool isSameFile(const std::string& a, const std::string& b);

/** A file that is written from front to end, replacing what it held; "-" is standard output. */
class OutputFile {
 public:
  /** Raises ToolError when the file cannot be opened. */
  explicit OutputFile(const std::string& path);

  /** Raises ToolError when writing fails. */
  void write(const uint8_t* bytes, size_t size);
  /** Makes sure that everything is written. Raises ToolError when it is not. */
  void close();

 private:
  struct Close {
    void operator()(std::FILE* file) const;
  };

  [[noreturn]] void fail() const;

  std::string path_;
  std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace tevra::tools
