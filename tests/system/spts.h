#pragma once

#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/system/psi_tables.h"
#include "tests/system/transport_stream.h"

/** Single-programme streams that the tool wrote, and what must hold for each. */
namespace tevra::test {

/** What stands in an output stream, read from its packets. */
struct Spts {
  explicit Spts(const std::string& path)
      : stream(path),
        pat(parsePat(firstSection(stream, kPatPid, kPatTableId))),
        sdt(parseSdt(firstSection(stream, kSdtPid, kSdtActualTableId))),
        pmtPid(pat.programs.empty() ? -1 : pat.programs.begin()->second),
        pmt(parsePmt(firstSection(stream, pmtPid, kPmtTableId))) {}

  TransportStream stream;
  ParsedPat pat;
  ParsedSdt sdt;
  int pmtPid;
  ParsedPmt pmt;
};

/** One programme, one service, and every PID from the pool and accounted for. */
void expectOneProgramme(const Spts& spts, int serviceId, const std::string& name);

/** Every section of a table the same and on its own PID, its packets following each other. */
void expectSteadyTables(const Spts& spts);

/** PAT and PMT ten times a second, the SDT every second. */
void expectTablesOftenEnough(const Spts& spts);

/** The streams of an input PMT that an output without audio filter has. */
[[nodiscard]] std::vector<ParsedStream> carriedStreams(const ParsedPmt& pmt);

/** Each stream of the output is the input's, packet for packet, under another PID. */
void expectStreamsOf(const Spts& spts, const TransportStream& input,
                     const std::vector<ParsedStream>& expected);

/** What ffprobe makes of a stream; null where it is not installed. */
[[nodiscard]] nlohmann::json probe(const std::string& path);

/** The streams, by kind, that ffprobe finds in the one programme of a file. */
[[nodiscard]] std::multiset<std::string> probedKinds(const nlohmann::json& probed, int serviceId,
                                                     const std::string& name);

}  // namespace tevra::test
