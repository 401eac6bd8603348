#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "in_module_types.h"

/** Sections and packets as the standards have them, made with nothing of what is tested. */
namespace tevra::test {

/** The section of a table that fits one, CRC included. PAT and PMT: ISO/IEC 13818-1, 2.4.4; SDT: EN
 * 300 468, 5.2.3. */
[[nodiscard]] std::string sectionOf(const thrift::dvb_tables::PAT& pat);
[[nodiscard]] std::string sectionOf(const thrift::dvb_tables::SDT& sdt);
[[nodiscard]] std::string sectionOf(const thrift::dvb_tables::PMT& pmt);

/** The packets that carry one section alone: the continuity counter from 0, the rest of the last
 * one stuffed with 0xFF. Of `pid` the low 13 bits. */
[[nodiscard]] std::vector<std::string> packetsOf(const std::string& section, int32_t pid);

}  // namespace tevra::test
