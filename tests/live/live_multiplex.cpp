#include "tests/live/live_multiplex.h"

#include <algorithm>
#include <string>
#include <tuple>

namespace tevra::test {
namespace {

using tools::TsPacket;
using tools::test::Bytes;
using tools::test::joined;

constexpr int kServices = 8;
constexpr int kPacketBits = 188 * 8;

// Numbers of a service's PIDs, and of what it has of the multiplex.
constexpr int kPmt = 0;
constexpr int kVideo = 1;
constexpr int kFirstAudio = 2;
constexpr double kVideoShare = 0.09;
constexpr double kAudioShare = 0.006;

constexpr int kVideoType = 0x1B;
constexpr int kAudioType = 0x04;

constexpr double kPcrSeconds = 0.04;
constexpr double kPsiSeconds = 0.08;
constexpr double kSdtSeconds = 0.5;
constexpr double kAnnouncedBefore = 0.2;

/** PCRs of a transport stream count from here: of the first to their wrap-around after a second. */
int64_t firstPcr(uint32_t era) {
  constexpr int64_t kApart = 1000 * tools::kSystemClock;
  return era == 0 ? tools::kPcrModulus - tools::kSystemClock : era * kApart % tools::kPcrModulus;
}

Bytes audioLanguage(int number) {
  static const std::vector<std::string> kLanguages = {"eng", "spa", "fra"};
  const std::string& code = kLanguages.at(static_cast<size_t>(number - kFirstAudio));
  return tools::test::descriptor(0x0A, tools::test::bytesOf(code + '\0'));
}

Bytes sdtEntry(int service) {
  const Bytes name = tools::test::bytesOf("Service " + std::to_string(service));
  const Bytes descriptor = tools::test::descriptor(
      0x48, joined({{0x01, 0x00, static_cast<uint8_t>(name.size())}, name}));
  return joined({tools::test::be16(service), {0xFC}, tools::test::loop(0x8, descriptor)});
}

}  // namespace

LiveMultiplex::LiveMultiplex(int megabits)
    : megabits_(megabits), packetsPerSecond_(1e6 * megabits / kPacketBits) {
  begin();
}

void LiveMultiplex::begin() {
  eras_.push_back(packets_);
  tables_.clear();
  sources_.clear();
  tools::test::Programs programs;
  for (int service = kFirstService; service < kFirstService + kServices; ++service) {
    programs.emplace_back(service, pidOf(service, kPmt));
  }
  const auto era = static_cast<int>(eras_.size());
  addTable(tools::kPatPid, tools::test::makePat(era, era % 32, programs), kPsiSeconds);
  addTable(tools::kSdtPid, sdt(), kSdtSeconds);
  for (const auto& [service, pmtPid] : programs) {
    addTable(pmtPid, pmtOf(service), kPsiSeconds);
    addService(service);
  }
}

void LiveMultiplex::addService(int service) {
  addSource(service, kVideo, kVideoShare);
  addSource(service, kFirstAudio, kAudioShare);
  addSource(service, kFirstAudio + 1, kAudioShare);
}

void LiveMultiplex::addSource(int service, int number, double share) {
  Source source{};
  source.id = {static_cast<uint32_t>(eras_.size() - 1),
               static_cast<uint32_t>(pidOf(service, number))};
  source.isOfService = service == kService;
  source.hasPcr = number == kVideo;
  source.period = 1 / share;
  source.next = static_cast<double>(packets_);
  source.nextPcr = source.next;
  sources_.push_back(source);
}

int LiveMultiplex::pidOf(int service, int number) const {
  const int first = eras_.size() % 2 == 1 ? 0x0100 : 0x0900;
  return first + (service - kFirstService) * 0x10 + number;
}

Bytes LiveMultiplex::pmtOf(int service) const {
  std::vector<tools::test::Stream> streams = {{kVideoType, pidOf(service, kVideo), {}}};
  const int audioStreams = service == kService ? audioStreams_ : 2;
  for (int number = kFirstAudio; number < kFirstAudio + audioStreams; ++number) {
    streams.push_back({kAudioType, pidOf(service, number), audioLanguage(number)});
  }
  return tools::test::makePmt(service, pmtVersion_ % 32, pidOf(service, kVideo), streams);
}

Bytes LiveMultiplex::sdt() const {
  constexpr int kOriginalNetworkId = 0xFF01;
  const auto era = static_cast<int>(eras_.size());
  Bytes payload = joined({tools::test::be16(kOriginalNetworkId), {0xFF}});
  for (int service = kFirstService; service < kFirstService + kServices; ++service) {
    payload = joined({payload, sdtEntry(service)});
  }
  return tools::test::makeSection({0x42, era, era % 32}, payload);
}

void LiveMultiplex::addTable(int pid, const Bytes& section, double seconds) {
  const double period = seconds * packetsPerSecond_;
  tables_.push_back({pid, section, period, static_cast<double>(packets_) + period});
}

void LiveMultiplex::addStream() {
  ++pmtVersion_;
  addSource(kService, kFirstAudio + audioStreams_, kAudioShare);
  ++audioStreams_;
  sources_.back().next += kAnnouncedBefore * packetsPerSecond_;
  const int pmtPid = pidOf(kService, kPmt);
  for (Table& table : tables_) {
    if (table.pid == pmtPid) {
      table.section = pmtOf(kService);
      table.next = static_cast<double>(packets_);
    }
  }
}

void LiveMultiplex::changeTransportStream() {
  ++pmtVersion_;
  audioStreams_ = 2;
  begin();
}

TsPacket LiveMultiplex::next(int64_t sentAt) {
  queueTables();
  TsPacket packet = writer_.stream(tools::kNullPid, 0xFF);
  if (!queue_.empty()) {
    packet = queue_.front();
    queue_.pop_front();
  } else if (Source* const source = dueSource(); source != nullptr) {
    packet = streamPacket(*source, sentAt);
  }
  ++packets_;
  return packet;
}

void LiveMultiplex::queueTables() {
  for (Table& table : tables_) {
    if (table.next <= static_cast<double>(packets_)) {
      const auto packets = writer_.section(table.pid, table.section);
      queue_.insert(queue_.end(), packets.begin(), packets.end());
      table.next += table.period;
    }
  }
}

/** The one that has waited longest; null when none has to send. */
LiveMultiplex::Source* LiveMultiplex::dueSource() {
  const auto first =
      std::min_element(sources_.begin(), sources_.end(),
                       [](const Source& a, const Source& b) { return a.next < b.next; });
  return first->next <= static_cast<double>(packets_) ? &*first : nullptr;
}

TsPacket LiveMultiplex::streamPacket(Source& source, int64_t sentAt) {
  Stamp stamp;
  std::tie(stamp.era, stamp.pid) = source.id;
  stamp.sequence = source.sequence;
  stamp.position = packets_;
  stamp.previous = source.previous;
  stamp.sentAt = sentAt;
  std::optional<int64_t> clock;
  if (source.hasPcr && source.nextPcr <= static_cast<double>(packets_)) {
    clock = pcr();
    source.nextPcr += kPcrSeconds * packetsPerSecond_;
  }
  stamp.pcr = clock.value_or(-1);
  TsPacket packet = writer_.stream(static_cast<int>(source.id.second), 0xFF, clock);
  writeStamp(packet, stamp);
  source.previous = packets_;
  source.next += source.period;
  ++source.sequence;
  if (source.isOfService) {
    sent_[source.id] = source.sequence;
  }
  return packet;
}

int64_t LiveMultiplex::pcr() const {
  const int64_t ticks =
      static_cast<int64_t>(packets_) * kPacketBits * (tools::kSystemClock / 1'000'000) / megabits_;
  return (firstPcr(static_cast<uint32_t>(eras_.size() - 1)) + ticks) % tools::kPcrModulus;
}

}  // namespace tevra::test
