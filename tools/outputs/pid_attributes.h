#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tevra::tools {

///@{
/** A bit of PIDItem.attributes: why an output carries a PID. */
inline constexpr int32_t kPidPmt = 0x02;
inline constexpr int32_t kPidPcr = 0x04;
inline constexpr int32_t kPidEs = 0x08;
inline constexpr int32_t kPidEcm = 0x10;
inline constexpr int32_t kPidEmm = 0x20;
///@}

/**
 * What stands in PIDItem.inputPid when the daemon does not know which input PID feeds an output
 * PID.
 */
inline constexpr int32_t kUnknownPid = 65535;

/** "PMT", "PCR", "ES", "ECM", "EMM" for the bits set; other bits have no name. */
[[nodiscard]] std::vector<std::string> pidAttributeNames(int32_t attributes);

}  // namespace tevra::tools
