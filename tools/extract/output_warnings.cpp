#include "tools/extract/output_warnings.h"

#include <algorithm>

#include "tools/descriptors/descriptor_values.h"
#include "tools/descriptors/stream_names.h"
#include "tools/outputs/audio_warnings.h"
#include "tools/outputs/carriage.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/stream/ts_packet.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

using Lines = std::vector<std::string>;

const PMT& pmtOf(const SptsFile& file) {
  return file.configuration.outputTables.dvbTables.pmt;
}

bool isUsable(int pid) {
  return pid > kPatPid && pid < kNullPid;
}

/** "no packet of output PID 502 (ES), 503 (ES)" has the list of these. */
std::string listed(const Lines& pids) {
  return (pids.size() == 1 ? " PID " : " PIDs ") + joined(pids, ", ");
}

std::string described(int pid, const std::string& what) {
  return std::to_string(pid) + " (" + what + ")";
}

void addPmtPid(const SptsFile& file, Lines& lines) {
  const PAT& pat = file.configuration.outputTables.dvbTables.pat;
  const int pid = pat.programs.empty() ? 0 : pat.programs.front().pid;
  if (!isUsable(pid)) {
    lines.push_back("the output's PMT has no usable PID (" + std::to_string(pid) +
                    "): no receiver finds its streams");
  }
}

/** Why there is none; empty where there is. */
std::string faultOfClock(const SptsFile& file) {
  const int pcrPid = pmtOf(file).pcrPid;
  const auto& items = file.configuration.pidItems;
  const auto item = std::find_if(items.begin(), items.end(), [](const PIDItem& candidate) {
    return (candidate.attributes & kPidPcr) != 0;
  });
  if (item == items.end() || !isUsable(pcrPid)) {
    return "the output has no usable PCR PID (" + std::to_string(pcrPid) + ")";
  }
  if (item->inputPid == kNullPid) {
    return "the service has no PCR PID (" + std::to_string(item->inputPid) + ")";
  }
  const bool isSilent = file.pcrs == 0 && file.streamPackets != 0;
  return isSilent ? "there is no PCR on output PID " + std::to_string(pcrPid) : "";
}

void addClock(const SptsFile& file, Lines& lines) {
  const std::string fault = faultOfClock(file);
  if (!fault.empty()) {
    lines.push_back(fault + ": a receiver has no clock to play by");
  }
}

/** What the output's PMT calls the stream, or else why the output carries the PID. */
std::string nameOf(const PIDItem& item, const PMT& pmt) {
  for (const PMTES& stream : pmt.esList) {
    if (stream.pid == item.outputPid) {
      return streamName(stream);
    }
  }
  return joined(pidAttributeNames(item.attributes), ", ");
}

void addSilentStreams(const SptsFile& file, Lines& lines) {
  Lines silent;
  for (const PIDItem& item : file.configuration.pidItems) {
    const bool isStream = (item.attributes & (kPidEs | kPidEcm | kPidEmm)) != 0;
    const bool isKnown = item.inputPid != kUnknownPid && item.inputPid != kNullPid;
    if (isStream && isKnown && file.pidPackets.count(item.outputPid) == 0) {
      silent.push_back(described(item.outputPid, nameOf(item, pmtOf(file))));
    }
  }
  if (!silent.empty() && file.streamPackets != 0) {
    lines.push_back("the input has no packet of output" + listed(silent));
  }
}

void addGaps(const SptsFile& file, Lines& lines) {
  const auto& items = file.configuration.pidItems;
  for (const auto& [pid, gaps] : file.pidGaps) {
    const auto item = std::find_if(items.begin(), items.end(), [pid = pid](const PIDItem& any) {
      return any.outputPid == pid;
    });
    const bool isThere = item != items.end();  // not, where an answer before the last had it
    lines.push_back(counted(gaps, "gap") + " in the packets of output PID " +
                    (isThere ? described(pid, nameOf(*item, pmtOf(file))) : std::to_string(pid)));
  }
}

/** Whether CA descriptors tell how the stream on the PID is descrambled. */
bool isAnnounced(int pid, const PMT& pmt) {
  return !caReferences(pmt.descriptors).empty() ||
         std::any_of(pmt.esList.begin(), pmt.esList.end(), [&](const PMTES& stream) {
           return stream.pid == pid && !caReferences(stream.descriptors).empty();
         });
}

void addScrambled(const SptsFile& file, Lines& lines) {
  Lines pids;
  uint64_t packets = 0;
  for (const auto& [pid, count] : file.pidScrambled) {
    if (!isAnnounced(pid, pmtOf(file))) {
      pids.push_back(std::to_string(pid));
      packets += count;
    }
  }
  if (!pids.empty()) {
    lines.push_back(counted(packets, "packet") + " on output" + listed(pids) +
                    (packets == 1 ? " is" : " are") +
                    " scrambled, but the output is announced as clear");
  }
}

void addUncarried(const SptsFile& file, Lines& lines) {
  Lines uncarried;
  for (const PMTES& stream : file.input.esList) {
    if (!isCarried(stream.streamType)) {
      uncarried.push_back(described(stream.pid, streamName(stream)));
    }
  }
  if (!uncarried.empty()) {
    lines.push_back("left out for a type that is not carried: input" + listed(uncarried));
  }
}

}  // namespace

std::vector<std::string> outputWarnings(const SptsFile& file) {
  Lines lines;
  addPmtPid(file, lines);
  addClock(file, lines);
  addSilentStreams(file, lines);
  addGaps(file, lines);
  addScrambled(file, lines);
  addUncarried(file, lines);
  for (std::string& line : audioWarnings(file.output.resolvedAudio(), file.input, "input")) {
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace tevra::tools
