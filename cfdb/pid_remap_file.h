#pragma once

#include <string>

#include "records/record_file_access.h"
#include "records/records.h"

/**
 * @file
 * The file that keeps a chain's PID mapping: one PIDRemap record as Thrift JSON, nothing else.
 */
namespace tevra {

/**
 * Creates the file with mode 0600 or truncates it; no directory is created. A file that could not
 * be synced has failed. Raises nothing.
 */
[[nodiscard]] RecordFileResult writePIDRemapFile(const std::string& path, const PIDRemap& record);

/** As readRecord. */
[[nodiscard]] RecordFileResult readPIDRemapFile(const std::string& path, PIDRemap& record);

}  // namespace tevra
