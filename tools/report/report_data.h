#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/**
 * What a report says, as plain facts: collected once, then written as a page or as JSON. Texts are
 * UTF-8 as the stream gives them and not fit for a page before they are escaped.
 */
namespace tevra::tools::report {

/** What a PID carries; decides its colour and its place. */
enum class StreamKind {
  kVideo,
  kAudio,
  kSubtitles,  ///< and teletext
  kData,
  kTables,             ///< PSI and SI
  kConditionalAccess,  ///< ECM and EMM
  kUnreferenced,       ///< in no PAT, CAT or PMT
  kStuffing,
};
inline constexpr size_t kStreamKinds = 8;

/** What was counted of one PID of the input. */
struct PidCount {
  uint64_t packets = 0;
  uint64_t continuityErrors = 0;
  uint64_t scrambled = 0;
  uint64_t transportErrors = 0;
  uint64_t pcrs = 0;
  uint64_t crcErrors = 0;      ///< of sections; counted on the PIDs of tables alone
  uint64_t otherSections = 0;  ///< cut short, or with lengths that do not add up
};

/** An input PID in the place where it is shown. */
struct InputStream {
  int pid = 0;
  StreamKind kind = StreamKind::kUnreferenced;
  std::string description;             ///< "AVC video", "PMT", "EMM of 0x0071"
  std::vector<std::string> languages;  ///< in the stream's order, as they are written there
  bool hasPcr = false;                 ///< the PCR_PID of its service
};

/** A PID of an output. */
struct OutputStream {
  std::optional<int> inputPid;  ///< nothing: the daemon does not know it, or makes the packets
  int outputPid = 0;
  StreamKind kind = StreamKind::kUnreferenced;
  std::string description;
  std::vector<std::string> languages;
  std::vector<std::string> attributes;  ///< "PMT", "PCR", "ES", "ECM", "EMM"
  bool made = false;                    ///< the daemon makes the packets: PAT, SDT and PMT
};

/** A table in a place of its own: what feed would print as a line. */
struct TableFact {
  std::string kind;  ///< "PMT", "EIT schedule"
  int tableId = 0;
  std::string of;              ///< "service 101"
  std::optional<int> version;  ///< a TOT has none
  size_t sections = 0;         ///< packets for an output
  int pid = 0;
  size_t times = 0;  ///< how often a new version was complete
};

/** The single-programme stream that the daemon makes of a service. */
struct Output {
  int serviceId = 0;
  std::string name;
  int transportStreamId = 0;
  int originalNetworkId = 0;
  std::vector<OutputStream> streams;  ///< by output PID
  std::vector<TableFact> tables;
};

/** A time of the stream's own clock, in seconds of UTC since 1858-11-17, the day 0 of the MJD. */
using StreamTime = int64_t;

struct Event {
  int eventId = 0;
  StreamTime start = 0;
  int64_t duration = 0;  ///< seconds
  std::string name;
  bool isScheduled = false;  ///< in an EIT schedule
  bool isPresent = false;    ///< first of the EIT present/following
  bool isFollowing = false;  ///< second of it
};

struct Service {
  int serviceId = 0;
  std::string typeName;
  std::string name;
  std::string provider;
  std::optional<int> pmtPid;
  bool hasPmt = false;
  std::vector<InputStream> streams;  ///< PMT, elementary streams, separate PCR, ECMs
  std::optional<Output> output;      ///< nothing where there is no PMT or the daemon gave none
  std::vector<Event> events;         ///< by start time
  size_t timelessEvents = 0;         ///< without a start time or duration that makes sense
};

/** Everything. */
struct Report {
  std::string file;
  std::string title;  ///< empty: the file's name
  uint64_t packets = 0;
  std::optional<double> seconds;  ///< by the PCRs; nothing without any
  std::optional<int> transportStreamId;
  std::optional<int> originalNetworkId;
  std::optional<int> networkId;
  std::string networkName;
  std::optional<StreamTime> firstClock;  ///< of TDT and TOT
  std::optional<StreamTime> lastClock;
  size_t tablesSent = 0;
  std::vector<std::string> faults;  ///< of packets and tables, a line each, for people
  std::map<int, PidCount> pids;     ///< all that have packets
  std::vector<Service> services;    ///< by service id
  std::vector<InputStream> others;  ///< of no service
  std::vector<TableFact> tables;    ///< of the input

  /** As constructed for a PID without packets. */
  [[nodiscard]] PidCount countOf(int pid) const;
  /** In bit/s; nothing without a clock. */
  [[nodiscard]] std::optional<double> bitRate(uint64_t packetCount) const;
  /** Of all packets, 0 to 1. */
  [[nodiscard]] double share(uint64_t packetCount) const;
};

}  // namespace tevra::tools::report
