#pragma once

#include <cstddef>
#include <string>

#include "records/records.h"

/**
 * @file
 * The three records that survive a restart, TableStoreFile, EITTableVersionStoreFile and PIDRemap,
 * each alone in a file of its own as Thrift JSON.
 *
 * `Record` is one of the three; the first two are written from the maps of their entries, each of
 * which keeps its text. Nothing is logged; only reading raises anything. Where a `reason` is given,
 * it says why a file could not be written or read.
 */
namespace tevra {

/** What became of a file. */
enum RecordFileResult : int {
  kRecordFileDone = 0,
  kRecordFileNotOpened = -1,
  kRecordFileFailed = -2,
};

/** Of the buffer before a file; what it holds in the end follows the sync of the file system. */
inline constexpr size_t kRecordFileBuffer = size_t{64} * 1024;

/**
 * Puts a file that holds `record` under `path`, with mode 0600; no directory is made. One of more
 * than kMaxRecordFileSize, which no start would read, is refused. After a failure the former file
 * is still there, unless it was written where it lies: AtomicFile.
 */
template <class Record>
[[nodiscard]] RecordFileResult writeRecordToFile(const std::string& path, const Record& record,
                                                 std::string* reason = nullptr);

/**
 * Reads the file into `record`, which should be fresh: members absent from the file keep their
 * values. On kRecordFileFailed it keeps what was read before the fault. Its values are as they
 * stand in the file, within their types: counters and versions may be anything. Raises
 * std::bad_alloc: whoever went on without what a whole file holds would lose it with the next save.
 */
template <class Record>
[[nodiscard]] RecordFileResult readRecordFromFile(const std::string& path, Record& record,
                                                  std::string* reason = nullptr);

}  // namespace tevra
