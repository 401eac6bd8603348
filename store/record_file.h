#pragma once

#include <string>

#include "records/records.h"

namespace tevra {

/** Results of the file routines. */
enum RecordFileResult : int {
  kRecordFileDone = 0,
  kRecordFileNotOpened = -1,
  kRecordFileFailed = -2,  ///< any exception after opening
};

///@{
/**
 * Writes `record`, alone, as Thrift JSON: creates the file with mode 0600 or truncates it. A
 * failure leaves the file as far as it was written. Raises nothing.
 */
[[nodiscard]] int writeRecordToFile(const std::string& path, const TableStoreFile& record);
[[nodiscard]] int writeRecordToFile(const std::string& path,
                                    const EITTableVersionStoreFile& record);
///@}

///@{
/**
 * Reads `path` into `record`, which should be fresh: members absent from the file keep their
 * values. On kRecordFileFailed it keeps what was read before the fault. Whatever the file holds,
 * its values are as they stand there: counters and versions may be anything. Raises nothing.
 */
[[nodiscard]] int readRecordFromFile(const std::string& path, TableStoreFile& record);
[[nodiscard]] int readRecordFromFile(const std::string& path, EITTableVersionStoreFile& record);
///@}

}  // namespace tevra
