#pragma once

#include <string>

#include "records/records.h"

/**
 * @file
 * The file that keeps a chain's PID mapping: one PIDRemap record as Thrift JSON, nothing else.
 *
 * Both return 0 on success, -1 when the file cannot be opened, -2 on any failure afterwards.
 * Neither raises.
 */
namespace tevra {

/** Creates the file with mode 0600 or truncates it; no directory is created. */
[[nodiscard]] int writePIDRemapFile(const std::string& path, const PIDRemap& record);

/** `record` should be fresh: members absent from the file keep their values. */
[[nodiscard]] int readPIDRemapFile(const std::string& path, PIDRemap& record);

}  // namespace tevra
