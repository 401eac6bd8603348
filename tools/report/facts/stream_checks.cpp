#include "tools/report/facts/stream_checks.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {
namespace {

constexpr const char* kNoClock = "no PCR";
constexpr const char* kNoMedia = "no PMT names video or audio";

/** A check while its PIDs are looked at. */
class Finding {
 public:
  Finding(const char* number, const char* name, std::string limit) {
    check_.priority = number[0] - '0';
    check_.clause = "5.2." + std::to_string(check_.priority);
    check_.number = number;
    check_.name = name;
    check_.limit = std::move(limit);
  }

  /** Failed so often where no PID can be told. */
  void add(uint64_t count) { check_.count += count; }

  /** Failed so often on the PID, which comes behind all that were added. */
  void add(int pid, uint64_t count, std::optional<double> worst = std::nullopt) {
    add(count);
    if (worst && std::abs(*worst) > std::abs(check_.worst.value_or(0))) {
      check_.worst = worst;
    }
    if (count != 0) {
      check_.pids.push_back({pid, count, worst});
    }
  }

  /** All is known; without a failure it passes if there is no reason why it could not have. */
  [[nodiscard]] StreamCheck judged(const std::string& whyNot = "") {
    if (check_.count != 0) {
      check_.result = CheckResult::kFailed;
    } else if (!whyNot.empty()) {
      check_.result = CheckResult::kNotMeasurable;
      check_.reason = whyNot;
    }
    return check_;
  }

 private:
  StreamCheck check_;
};

std::optional<double> longestWait(const Recurrence& recurrence) {
  const auto wait = recurrence.longestWait();
  return wait ? std::optional<double>(ticksToSeconds(*wait)) : std::nullopt;
}

/** Why an interval of more than `limit` ticks could not have been seen; empty if it could. */
std::string whyUntimed(const StreamSurvey& survey, int64_t limit) {
  if (!survey.seconds()) {
    return kNoClock;
  }
  return *survey.intervals().span() > limit ? "" : "shorter than the limit";
}

/** Sections on the PID of any other table. */
uint64_t otherTables(const StreamSurvey& survey, int pid, int tableId) {
  uint64_t others = 0;
  for (const auto& [id, count] : survey.sections().on(pid)) {
    others += id == tableId ? 0 : count.sound + count.malformed;
  }
  return others;
}

/** Adds what had to come on the PID and did not, and `more`. */
void addTimed(Finding& finding, int pid, const Recurrence* recurrence, uint64_t more) {
  finding.add(pid, more + (recurrence == nullptr ? 0 : recurrence->misses()),
              recurrence == nullptr ? std::nullopt : longestWait(*recurrence));
}

StreamCheck syncLoss(const StreamSurvey& survey) {
  Finding finding("1.1", "TS_sync_loss", "two sync bytes in a row");
  finding.add(survey.reader().doubleSyncLosses());
  return finding.judged();
}

StreamCheck syncByte(const StreamSurvey& survey) {
  Finding finding("1.2", "Sync_byte_error", "none");
  finding.add(survey.reader().syncLosses());
  return finding.judged();
}

StreamCheck pat(const StreamSurvey& survey, const std::map<int, PidCount>& pids) {
  Finding finding("1.3.a", "PAT_error_2", "0.5 s");
  const PidIntervals* intervals = survey.intervals().of(kPatPid);
  const auto count = pids.find(kPatPid);
  addTimed(finding, kPatPid, intervals == nullptr ? nullptr : &intervals->tables,
           otherTables(survey, kPatPid, kTablePat) +
               (count == pids.end() ? 0 : count->second.scrambled));
  return finding.judged(whyUntimed(survey, kTableLimit));
}

StreamCheck pmts(const StreamSurvey& survey, const std::map<int, PidCount>& pids) {
  Finding finding("1.5.a", "PMT_error_2", "0.5 s");
  for (const int pid : survey.everReferred().pmts) {
    const PidIntervals* intervals = survey.intervals().of(pid);
    const auto count = pids.find(pid);
    addTimed(finding, pid, intervals == nullptr ? nullptr : &intervals->tables,
             count == pids.end() ? 0 : count->second.scrambled);
  }
  return finding.judged(survey.journal().pat() ? whyUntimed(survey, kTableLimit) : "no PAT");
}

StreamCheck referredPids(const StreamSurvey& survey) {
  Finding finding("1.6", "PID_error", std::to_string(survey.pidPeriod()) + " s");
  for (const int pid : survey.everReferred().media) {
    const PidIntervals* intervals = survey.intervals().of(pid);
    addTimed(finding, pid, intervals == nullptr ? nullptr : &intervals->packets, 0);
  }
  return finding.judged(survey.everReferred().media.empty()
                            ? kNoMedia
                            : whyUntimed(survey, survey.pidPeriod() * kSystemClock));
}

/** A check that is a sum of one count by PID. */
StreamCheck counts(Finding finding, const std::map<int, PidCount>& pids,
                   uint64_t PidCount::*member) {
  for (const auto& [pid, count] : pids) {
    finding.add(pid, count.*member);
  }
  return finding.judged();
}

/** On a PID of PMTs other tables may be found, which the check is not about. */
StreamCheck crcs(const StreamSurvey& survey, const std::map<int, PidCount>& pids) {
  Finding finding("2.2", "CRC_error", "none");
  for (const auto& entry : pids) {
    const bool holdsPmts = survey.everReferred().pmts.count(entry.first) != 0;
    uint64_t wrong = 0;
    for (const auto& [tableId, count] : survey.sections().on(entry.first)) {
      wrong += !holdsPmts || tableId == kTablePmt ? count.wrongCrc : 0;
    }
    finding.add(entry.first, wrong);
  }
  return finding.judged();
}

std::string whyNoPcrs(const StreamSurvey& survey) {
  return survey.everReferred().clocks.empty() ? "no PMT names a PCR PID"
                                              : whyUntimed(survey, kPcrLimit);
}

StreamCheck pcrRepetition(const StreamSurvey& survey) {
  Finding finding("2.3a", "PCR_repetition_error", "0.1 s");
  for (const int pid : survey.everReferred().clocks) {
    const PidIntervals* intervals = survey.intervals().of(pid);
    addTimed(finding, pid, intervals == nullptr ? nullptr : &intervals->pcrs, 0);
  }
  return finding.judged(whyNoPcrs(survey));
}

/** The worst is one that failed, however small, where there is one. */
StreamCheck pcrSteps(const StreamSurvey& survey, const std::map<int, PidCount>& pids) {
  Finding finding("2.3b", "PCR_discontinuity_indicator_error", "0 to 0.1 s");
  const auto addAll = [&](bool haveFailed) {
    for (const int pid : survey.everReferred().clocks) {
      const auto count = pids.find(pid);
      if (count != pids.end() && (count->second.pcrJumps != 0) == haveFailed) {
        finding.add(pid, count->second.pcrJumps, count->second.widestPcrStep);
      }
    }
  };
  addAll(true);
  if (finding.judged().result != CheckResult::kFailed) {
    addAll(false);
  }
  return finding.judged(whyNoPcrs(survey));
}

StreamCheck ptss(const StreamSurvey& survey, const std::map<int, PidCount>& pids) {
  Finding finding("2.5", "PTS_error", "0.7 s");
  const std::set<int>& media = survey.everReferred().media;
  bool isReadable = false;
  for (const int pid : media) {
    const auto count = pids.find(pid);
    if (count == pids.end() || count->second.scrambled == 0) {
      const PidIntervals* intervals = survey.intervals().of(pid);
      addTimed(finding, pid, intervals == nullptr ? nullptr : &intervals->ptss, 0);
      isReadable = true;
    }
  }
  const std::string whyNot = isReadable ? whyUntimed(survey, kPtsLimit) : "all is scrambled";
  return finding.judged(media.empty() ? kNoMedia : whyNot);
}

StreamCheck cat(const StreamSurvey& survey, const std::map<int, PidCount>& pids) {
  Finding finding("2.6", "CAT_error", "none");
  const auto& sections = survey.sections().on(kCatPid);
  const auto cats = sections.find(kTableCat);
  const bool hasCat = cats != sections.end() && cats->second.sound != 0;
  for (const auto& [pid, count] : pids) {
    finding.add(pid, (hasCat ? 0 : count.scrambled) +
                         (pid == kCatPid ? otherTables(survey, pid, kTableCat) : 0));
  }
  return finding.judged();
}

/** Adds what is known of the intervals, if there is one. */
void add(const char* what, int pid, const Recurrence& recurrence,
         std::vector<IntervalFact>& facts) {
  if (recurrence.intervals() != 0) {
    facts.push_back({what,
                     pid,
                     {},
                     recurrence.intervals(),
                     ticksToSeconds(recurrence.shortest()),
                     ticksToSeconds(recurrence.sum()) / static_cast<double>(recurrence.intervals()),
                     ticksToSeconds(recurrence.longest())});
  }
}

}  // namespace

bool firstPriorityFailed(const std::vector<StreamCheck>& checks) {
  return std::any_of(checks.begin(), checks.end(), [](const StreamCheck& check) {
    return check.priority == 1 && check.result == CheckResult::kFailed;
  });
}

std::vector<StreamCheck> checksOf(const StreamSurvey& survey) {
  const std::map<int, PidCount> pids = survey.census().pids();
  return {syncLoss(survey),
          syncByte(survey),
          pat(survey, pids),
          counts({"1.4", "Continuity_count_error", "none"}, pids, &PidCount::continuityErrors),
          pmts(survey, pids),
          referredPids(survey),
          counts({"2.1", "Transport_error", "none"}, pids, &PidCount::transportErrors),
          crcs(survey, pids),
          pcrRepetition(survey),
          pcrSteps(survey, pids),
          ptss(survey, pids),
          cat(survey, pids)};
}

std::vector<IntervalFact> intervalsOf(const StreamSurvey& survey) {
  std::vector<IntervalFact> facts;
  const auto addAll = [&](const char* what, const std::set<int>& pids, auto member) {
    for (const int pid : pids) {
      if (const PidIntervals* intervals = survey.intervals().of(pid)) {
        add(what, pid, intervals->*member, facts);
      }
    }
  };
  addAll("PAT", {kPatPid}, &PidIntervals::tables);
  addAll("PMT", survey.everReferred().pmts, &PidIntervals::tables);
  addAll("SDT", {kSdtPid}, &PidIntervals::tables);
  addAll("PCR", survey.everReferred().clocks, &PidIntervals::pcrs);
  return facts;
}

std::vector<IntervalFact> tableIntervalsOf(const StreamSurvey& survey, int pcrPid, int pmtPid) {
  std::vector<IntervalFact> facts;
  if (const RepeatedTables* tables = survey.intervals().repeated(pcrPid)) {
    add("PAT", kPatPid, tables->patAndPmt, facts);
    add("PMT", pmtPid, tables->patAndPmt, facts);
    add("SDT", kSdtPid, tables->sdt, facts);
  }
  return facts;
}

}  // namespace tevra::tools::report
