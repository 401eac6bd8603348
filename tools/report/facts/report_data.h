#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/report/facts/stream_check.h"
#include "tools/si/si_table.h"
#include "tools/text/dvb_time.h"

/**
 * @file
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
inline constexpr size_t kStreamKinds = 8;  ///< how many there are

/**
 * What was counted of one PID of the input. Of a packet flagged as damaged nothing else is counted,
 * and of null packets neither continuity nor scrambling nor PCRs.
 */
struct PidCount {
  uint64_t packets = 0;           ///< damaged ones too
  uint64_t continuityErrors = 0;  ///< but where discontinuity_indicator announces one
  uint64_t scrambled = 0;         ///< packets
  uint64_t transportErrors = 0;   ///< packets with transport_error_indicator
  uint64_t pcrs = 0;              ///< packets with a PCR
  uint64_t pcrJumps = 0;  ///< from one to the next not 0 to 0.1 s, and nothing announces that
  std::optional<double> widestPcrStep;  ///< of those, or else of all; seconds, less than 0: back
  uint64_t sections = 0;                ///< whose end came; counted on the PIDs of tables alone
  uint64_t crcErrors = 0;               ///< of those, with a wrong CRC_32
  uint64_t otherSections = 0;           ///< cut short, or with lengths that do not add up

  /** Whether packets are lost or damaged, or sections have a wrong CRC. */
  [[nodiscard]] bool isFaulty() const {
    return continuityErrors + transportErrors + crcErrors != 0;
  }
};

/** An input PID in the place where it is shown. */
struct InputStream {
  int pid = 0;                                  ///< 0 to 8191
  StreamKind kind = StreamKind::kUnreferenced;  ///< by the tables, or by the PID
  std::string description;                      ///< "AVC video", "PMT", "EMM of 0x0071"
  std::vector<std::string> languages;  ///< in the stream's order, as they are written there
  bool hasPcr = false;                 ///< the PCR_PID of its service
};

/** A PID of an output. */
struct OutputStream {
  std::optional<int> inputPid;  ///< nothing: the daemon does not know it, or makes the packets
  int outputPid = 0;            ///< 0 to 8191
  StreamKind kind = StreamKind::kUnreferenced;  ///< by the output's own PMT, else the attributes
  std::string description;                      ///< "AVC video", "ECM", "PCR alone"
  std::vector<std::string> languages;           ///< of the output's own PMT
  std::vector<std::string> attributes;          ///< "PMT", "PCR", "ES", "ECM", "EMM"
  bool made = false;                            ///< the daemon makes the packets: PAT, SDT and PMT
};

/** A table in a place of its own. */
struct TableFact {
  SiTable table;        ///< its last version
  size_t sections = 0;  ///< packets for an output
  int pid = 0;          ///< of a PMT as the PAT says; where it does not, 0 (input) or 8191 (output)
  size_t times = 0;     ///< how often a new version was complete, of the input
  uint64_t arrivals = 0;  ///< how often its first section came, repetitions included, of the input
};

/** The single-programme stream that the daemon makes of a service. */
struct Output {
  int serviceId = 0;                    ///< of the input service; the output has the same
  std::string name;                     ///< in its SDT; empty where that has none
  int transportStreamId = 0;            ///< in its PAT
  int originalNetworkId = 0;            ///< in its SDT
  std::vector<OutputStream> streams;    ///< by output PID
  std::vector<TableFact> tables;        ///< PAT, SDT, PMT
  std::vector<IntervalFact> intervals;  ///< PAT, PMT, SDT, PCRs; none without PCRs
};

/** An event of a service: one for all EITs that give it the same id, start and duration. */
struct Event {
  int eventId = 0;           ///< event_id
  StreamTime start = 0;      ///< of its first second
  int64_t duration = 0;      ///< seconds
  std::string name;          ///< of a short event descriptor; empty without one
  bool isScheduled = false;  ///< in an EIT schedule
  bool isPresent = false;    ///< first of the EIT present/following
  bool isFollowing = false;  ///< second of it
};

/** A service that the PAT or the SDT names. */
struct Service {
  int serviceId = 0;  ///< service_id, the programme number of its PMT
  ///@{
  /** Of the SDT's service descriptor; empty without one. */
  std::string typeName;
  std::string name;
  std::string provider;
  ///@}
  std::optional<int> pmtPid;         ///< nothing where the PAT does not name it
  bool hasPmt = false;               ///< else `streams` has the PMT's PID at most
  std::vector<InputStream> streams;  ///< PMT, elementary streams, separate PCR, ECMs
  std::optional<Output> output;      ///< nothing where there is no PMT or the daemon gave none
  std::vector<Event> events;         ///< by start time
  size_t timelessEvents = 0;         ///< without a start time or duration that makes sense
};

/** Everything. */
struct Report {
  std::string file;                      ///< as it was given
  std::string title;                     ///< empty: the file's name
  uint64_t packets = 0;                  ///< of the whole file
  std::optional<double> seconds;         ///< by the PCRs, more than 0; nothing without any
  std::optional<int> transportStreamId;  ///< of the PAT
  std::optional<int> originalNetworkId;  ///< of the SDT
  std::optional<int> networkId;          ///< of the NIT
  std::string networkName;               ///< of the NIT; empty where it has none
  std::optional<StreamTime> firstClock;  ///< of TDT and TOT; nothing without any
  std::optional<StreamTime> lastClock;   ///< of the same, in the order of the stream
  size_t tablesSent = 0;                 ///< to the daemon, those that it refused included
  /** Of packets, tables and answers, but those that are counted by PID; a line each. */
  std::vector<std::string> faults;
  std::map<int, PidCount> pids;         ///< all that have packets
  std::vector<Service> services;        ///< by service id
  std::vector<InputStream> others;      ///< of no service
  std::vector<TableFact> tables;        ///< of the input
  std::vector<StreamCheck> checks;      ///< by their numbers
  std::vector<IntervalFact> intervals;  ///< of the input: PAT, PMTs, SDT, PCRs

  /** As constructed for a PID without packets. */
  [[nodiscard]] PidCount countOf(int pid) const;
  /** In bit/s; nothing without a clock. */
  [[nodiscard]] std::optional<double> bitRate(uint64_t packetCount) const;
  /** Of all packets, 0 to 1. */
  [[nodiscard]] double share(uint64_t packetCount) const;
  /** The kinds that it has, with their packets; a PID of several services counts once. */
  [[nodiscard]] std::map<StreamKind, uint64_t> packetsByKind() const;
  /** Of all streams of the service. */
  [[nodiscard]] uint64_t packetsOf(const Service& service) const;
  /** How many services have an output. */
  [[nodiscard]] size_t outputs() const;
  /**
   * What is wrong, a line each, for people: what viewers miss first, then what packets show, then
   * `faults`.
   */
  [[nodiscard]] std::vector<std::string> faultLines() const;
};

}  // namespace tevra::tools::report
