#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "tests/system/transport_stream.h"

/** PSI and SI tables as they stand in a stream, of one section each as in what is tested. */
namespace tevra::test {

struct ParsedPat {
  int transportStreamId = 0;
  int version = 0;
  std::map<int, int> programs;  ///< program_number to PID, without the network's
};

struct ParsedStream {
  int type = 0;
  int pid = 0;
  std::map<int, std::string> descriptors;  ///< tag to payload; the last of a tag
};

struct ParsedPmt {
  int programNumber = 0;
  int version = 0;
  int pcrPid = 0;
  std::vector<ParsedStream> streams;
};

struct ParsedService {
  int type = 0;
  std::string provider;
  std::string name;
};

struct ParsedSdt {
  int transportStreamId = 0;
  int originalNetworkId = 0;
  int version = 0;
  std::map<int, ParsedService> services;
};

/** Each raises std::out_of_range when the section is shorter than it says. */
[[nodiscard]] ParsedPat parsePat(const std::string& section);
[[nodiscard]] ParsedPmt parsePmt(const std::string& section);
[[nodiscard]] ParsedSdt parseSdt(const std::string& section);

/** event_id to start_time, as a DVB time value (EN 300 468, 5.2.4). */
[[nodiscard]] std::map<int, int64_t> parseEitEvents(const std::string& section);

/** The first section with that table id on the PID; raises std::runtime_error without one. */
[[nodiscard]] std::string firstSection(const TransportStream& stream, int pid, int tableId);

inline constexpr int kPatTableId = 0x00;
inline constexpr int kPmtTableId = 0x02;
inline constexpr int kSdtActualTableId = 0x42;

inline constexpr int kPatPid = 0x0000;
inline constexpr int kSdtPid = 0x0011;
inline constexpr int kEitPid = 0x0012;

}  // namespace tevra::test
