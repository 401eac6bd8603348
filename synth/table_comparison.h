#pragma once

#include "records/records.h"

/**
 * @file
 * Whether a table's content changed, which is when its version moves. version_number and
 * current_next_indicator (docs/contract.md, "Current/next flags") are never compared; loops are
 * compared in order.
 */
namespace tevra {

///@{
/** True when `a` and `b` differ in anything that counts. */
[[nodiscard]] bool patChanged(const PAT& a, const PAT& b);
[[nodiscard]] bool sdtChanged(const SDT& a, const SDT& b);
[[nodiscard]] bool pmtChanged(const PMT& a, const PMT& b);
///@}

/** The version after `version`, modulo 32 (5 bits). Any value is accepted. */
[[nodiscard]] int32_t nextVersion(int32_t version);

}  // namespace tevra
