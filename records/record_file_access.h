#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <thrift/transport/TFDTransport.h>
#include <thrift/transport/TVirtualTransport.h>

/** How the files that survive a restart are opened and read, whatever lies in their place. */
namespace tevra {

/** What is read of a file at most: many times what the tables of a multiplex take. */
inline constexpr uint64_t kMaxRecordFileSize = uint64_t{64} * 1024 * 1024;

/** Opens for reading; -1 on failure. Never waits, not even for the writer of a pipe. */
[[nodiscard]] int openRecordFile(const std::string& path);

/**
 * Opens for writing: creates the file with mode 0600 or truncates it; -1 on failure. Never waits,
 * not even for the reader of a pipe.
 */
[[nodiscard]] int createRecordFile(const std::string& path);

/** The open file as a transport that closes it when destroyed. */
[[nodiscard]] std::shared_ptr<apache::thrift::transport::TFDTransport> owningTransport(int fd);

/**
 * The same for reading, ending after `limit` bytes: a string without an end would otherwise be read
 * into memory until there is none left.
 */
class RecordFileReader
    : public apache::thrift::transport::TVirtualTransport<RecordFileReader,
                                                          apache::thrift::transport::TFDTransport> {
 public:
  explicit RecordFileReader(int fd, uint64_t limit = kMaxRecordFileSize);

  /** Bytes read, 0 at the end. */
  uint32_t read(uint8_t* buffer, uint32_t size);

 private:
  uint64_t left_;
};

}  // namespace tevra
