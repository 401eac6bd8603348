#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TFDTransport.h>

/**
 * @file
 * How the files that survive a restart are opened and read, whatever lies in their place.
 */
namespace tevra {

/** What is read of a file at most: many times what the tables of a multiplex take. */
inline constexpr size_t kMaxRecordFileSize = size_t{16} * 1024 * 1024;

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
 * What the open file holds, from where it stands and up to `limit` bytes: a string without an end
 * would otherwise be read until there is no memory left. Closes the file; raises
 * TTransportException when it cannot be read.
 */
[[nodiscard]] std::shared_ptr<apache::thrift::transport::TMemoryBuffer> readRecordFile(
    int fd, size_t limit = kMaxRecordFileSize);

}  // namespace tevra
