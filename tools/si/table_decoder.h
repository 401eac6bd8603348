#pragma once

#include <vector>

#include "tools/si/section.h"
#include "tools/si/section_reader.h"
#include "tools/si/si_table.h"

/**
 * @file
 * The one way from sections to records: ISO/IEC 13818-1, 2.4.4, and EN 300 468, 5.2, field by
 * field.
 *
 * libdvbpsi's table decoders are not used: those of PMT, NIT and TOT follow inner lengths past the
 * end of a section, so that each section would have to be read before they read it; that of the PAT
 * gives no table without programmes; that of the TOT loses a last descriptor of less than two
 * bytes; and that of the EIT, where section numbers have gaps, as they do in every schedule, gives
 * a table only when its sections have come twice.
 */
namespace tevra::tools {

/**
 * Reads what lies behind the header of a section, which is read, into the table's record. The
 * record is of no use where the reader has failed.
 *
 * PAT programmes on PID 0, which no programme may use, are left out. An event is NVOD by
 * libdvbpsi's rule: its start time's low 32 bits begin with 20 ones and it is not running.
 */
[[nodiscard]] SiTable readContent(const Section& header, SectionReader& reader);

/**
 * The table that the sections make, which are given in order and are not empty: what is no list is
 * the first one's, lists are joined.
 */
[[nodiscard]] SiTable tableOf(std::vector<Section> sections);

}  // namespace tevra::tools
