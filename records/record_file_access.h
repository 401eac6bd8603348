#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TFDTransport.h>

/**
 * @file
 * How the files that survive a restart are opened and read, whatever lies in their place.
 */
namespace tevra {

/**
 * What is read of a file at most, and so the largest that may be saved. The versions of the EITs of
 * 65,536 services are half of it, the tables of a multiplex a small part.
 */
inline constexpr size_t kMaxRecordFileSize = size_t{32} * 1024 * 1024;

/**
 * Open for reading, without waiting for the other side of a pipe. What it returns closes the file
 * when destroyed; it is not open, and errno says why, when the file cannot be opened.
 */
[[nodiscard]] std::shared_ptr<apache::thrift::transport::TFDTransport> openRecordFile(
    const std::string& path);

/**
 * What the open file holds, from where it stands and up to `limit` bytes: a string without an end
 * would otherwise be read until there is no memory left. A file that can be read no further ends
 * there, at its beginning if it is a directory.
 */
[[nodiscard]] std::shared_ptr<apache::thrift::transport::TMemoryBuffer> readRecordFile(
    apache::thrift::transport::TFDTransport& file, size_t limit = kMaxRecordFileSize);

}  // namespace tevra
