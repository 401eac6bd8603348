#include "tools/report/facts/stream_survey.h"

#include <utility>
#include <variant>

#include "tools/text/dvb_time.h"

namespace tevra::tools::report {
namespace {

/** Whether the table is one that has to come again and again on this PID. */
bool isWaitedFor(int pid, int tableId) {
  switch (tableId) {
    case kTablePat:
      return pid == kPatPid;
    case kTablePmt:
      return pid != kPatPid && pid != kSdtPid;  // sections are looked at where a PAT says so
    case kTableSdtActual:
      return pid == kSdtPid;
    default:
      return false;
  }
}

}  // namespace

StreamSurvey::StreamSurvey(ByteSource& source, int pidPeriod, TableDemux::Consumer onTable)
    : pidPeriod_(pidPeriod),
      onTable_(std::move(onTable)),
      intervals_(pidPeriod),
      demux_([this](const SiTable& table, size_t sections) { take(table, sections); },
             [this](int pid, const SectionSeen& section) { take(pid, section); }),
      reader_(source) {
  TsPacket packet;
  while (reader_.next(packet)) {
    census_.push(packet);
    intervals_.push(packet);
    demux_.push(packet);
  }
  intervals_.finish();
}

void StreamSurvey::take(const SiTable& table, size_t sections) {
  onTable_(table, sections);
  journal_.add(table, sections);
  inventory_.add(table);
  if (const TOT* tot = std::get_if<TOT>(&table)) {
    if (const auto time = streamTime(tot->utcTime)) {
      census_.noteClock(*time);
    }
  } else if (std::holds_alternative<PAT>(table) || std::holds_alternative<PMT>(table)) {
    follow();
  }
}

void StreamSurvey::take(int pid, const SectionSeen& section) {
  sections_.add(pid, section);
  if (section.state == SectionSeen::State::kSound && isWaitedFor(pid, section.tableId)) {
    intervals_.noteTable();
  }
}

void StreamSurvey::follow() {
  References references = referencesOf(journal_);
  everReferred_.pmts.insert(references.pmts.begin(), references.pmts.end());
  everReferred_.clocks.insert(references.clocks.begin(), references.clocks.end());
  everReferred_.media.insert(references.media.begin(), references.media.end());
  intervals_.refer(std::move(references));
}

std::optional<double> StreamSurvey::seconds() const {
  const std::optional<int64_t> span = intervals_.span();
  return span && *span > 0 ? std::optional<double>(ticksToSeconds(*span)) : std::nullopt;
}

}  // namespace tevra::tools::report
