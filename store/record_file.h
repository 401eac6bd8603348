#pragma once

#include <string>

#include "records/record_file_access.h"
#include "records/records.h"

namespace tevra {

///@{
/**
 * Writes `record`, alone, as Thrift JSON: creates the file with mode 0600 or truncates it. A
 * failure leaves the file as far as it was written. Raises nothing.
 */
[[nodiscard]] RecordFileResult writeRecordToFile(const std::string& path,
                                                 const TableStoreFile& record);
[[nodiscard]] RecordFileResult writeRecordToFile(const std::string& path,
                                                 const EITTableVersionStoreFile& record);
///@}

///@{
/** As readRecord: counters and versions may be anything. */
[[nodiscard]] RecordFileResult readRecordFromFile(const std::string& path, TableStoreFile& record);
[[nodiscard]] RecordFileResult readRecordFromFile(const std::string& path,
                                                  EITTableVersionStoreFile& record);
///@}

}  // namespace tevra
