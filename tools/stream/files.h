#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "tools/stream/byte_source.h"

namespace tevra::tools {

/** Closes a file, but not standard output. */
struct FileCloser {
  void operator()(std::FILE* file) const;  ///< `file` is not null
};

/**
 * A file that is read from front to end; "-" is standard input.
 *
 * What is no regular file is waited for: a FIFO's first writer, a pipe's next bytes. Each read
 * hands on what is there.
 */
class InputFile : public ByteSource {
 public:
  /** Raises ToolError when the file cannot be opened. */
  explicit InputFile(std::string path, LiveOptions live = {});
  ~InputFile() override;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  [[nodiscard]] size_t read(uint8_t* buffer, size_t size) override;
  [[nodiscard]] bool isStopped() const override { return live_.stopped(); }
  /** Of a regular file alone. */
  [[nodiscard]] std::optional<uint64_t> size() const override;
  [[nodiscard]] bool rewind() override;

 private:
  std::string path_;
  LiveOptions live_;
  int descriptor_;
};

/** Whether both paths lead to the same existing file. */
[[nodiscard]] bool isSameFile(const std::string& a, const std::string& b);

/**
 * Raises ToolError where a file cannot be written under `path`, as far as that can be told without
 * touching it; "-" always can.
 */
void requireWritable(const std::string& path);

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
  [[noreturn]] void fail() const;

  std::string path_;
  std::unique_ptr<std::FILE, FileCloser> file_;
};

/**
 * Puts a file that holds `text` under `path`, in one step, so that who reads it meanwhile finds the
 * former one or this. What a symbolic link points to is replaced; what is there and no regular file
 * is written where it lies, as is what lies in a folder that takes no other file, and standard
 * output, "-". Raises ToolError when it cannot be, and then a file that was to be replaced stays.
 */
void replaceFile(const std::string& path, const std::string& text);

}  // namespace tevra::tools
