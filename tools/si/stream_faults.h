#pragma once

#include <string>
#include <vector>

#include "tools/si/table_demux.h"
#include "tools/stream/byte_source.h"
#include "tools/stream/ts_packet_reader.h"

namespace tevra::tools {

///@{
/**
 * What was wrong with `source` and the stream that has been read from it, a line each, for people.
 * `loss` says what became of tables that are not complete: "not sent". Of sections, those of all
 * PIDs, or what `sections` says.
 */
[[nodiscard]] std::vector<std::string> streamFaults(const ByteSource& source,
                                                    const TsPacketReader& reader,
                                                    const TableDemux& demux,
                                                    const std::string& loss);
[[nodiscard]] std::vector<std::string> streamFaults(const ByteSource& source,
                                                    const TsPacketReader& reader,
                                                    const TableDemux& demux,
                                                    const SectionFaults& sections,
                                                    const std::string& loss);
///@}

}  // namespace tevra::tools
