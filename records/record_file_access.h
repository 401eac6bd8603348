#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TFDTransport.h>

#include "records/json_protocol.h"

/**
 * @file
 * How the files that survive a restart are opened and read, whatever lies in their place.
 */
namespace tevra {

/** Results of the routines that read and write such a file. */
enum RecordFileResult : int {
  kRecordFileDone = 0,
  kRecordFileNotOpened = -1,
  kRecordFileFailed = -2,  ///< any exception, such as that of a text that is no record
};

/**
 * What is read of a file at most, and so the largest that may be saved. The versions of the EITs of
 * 65,536 services are half of it, the tables of a multiplex a small part.
 */
inline constexpr size_t kMaxRecordFileSize = size_t{32} * 1024 * 1024;

///@{
/**
 * Open for reading, or for writing: a file is created with mode 0600 or truncated. Neither waits,
 * not even for the other side of a pipe. What they return closes the file when destroyed; it is not
 * open when the file cannot be opened.
 */
[[nodiscard]] std::shared_ptr<apache::thrift::transport::TFDTransport> openRecordFile(
    const std::string& path);
[[nodiscard]] std::shared_ptr<apache::thrift::transport::TFDTransport> createRecordFile(
    const std::string& path);
///@}

/**
 * What the open file holds, from where it stands and up to `limit` bytes: a string without an end
 * would otherwise be read until there is no memory left. A file that can be read no further ends
 * there, at its beginning if it is a directory.
 */
[[nodiscard]] std::shared_ptr<apache::thrift::transport::TMemoryBuffer> readRecordFile(
    apache::thrift::transport::TFDTransport& file, size_t limit = kMaxRecordFileSize);

/**
 * Reads the file at `path`, one record as Thrift JSON, into `record`, which should be fresh:
 * members absent from the file keep their values. On kRecordFileFailed it keeps what was read
 * before the fault. Its values are as they stand in the file, within their types. Raises nothing.
 */
template <class Record>
[[nodiscard]] RecordFileResult readRecord(const std::string& path, Record& record) {
  try {
    const auto file = openRecordFile(path);
    if (!file->isOpen()) {
      return kRecordFileNotOpened;
    }
    JsonProtocol protocol(readRecordFile(*file));
    record.read(&protocol);
  } catch (...) {
    return kRecordFileFailed;
  }
  return kRecordFileDone;
}

}  // namespace tevra
