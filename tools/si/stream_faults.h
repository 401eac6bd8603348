#pragma once

#include <string>
#include <vector>

#include "tools/si/table_demux.h"
#include "tools/stream/ts_packet_reader.h"

namespace tevra::tools {

///@{
/**
 * What was wrong with a stream that has been read to its end, a line each, for people. `loss` says
 * what became of tables that are not complete: "not sent". Of sections, those of all PIDs, or what
 * `sections` says.
 */
[[nodiscard]] std::vector<std::string> streamFaults(const TsPacketReader& reader,
                                                    const TableDemux& demux,
                                                    const std::string& loss);
[[nodiscard]] std::vector<std::string> streamFaults(const TsPacketReader& reader,
                                                    const TableDemux& demux,
                                                    const SectionFaults& sections,
                                                    const std::string& loss);
///@}

}  // namespace tevra::tools
