#include "tools/extract/spts_writer.h"

#include <algorithm>
#include <utility>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

std::vector<TsPacket> packetsOf(const std::vector<std::string>& list, const std::string& table) {
  const bool areGood =
      !list.empty() && std::all_of(list.begin(), list.end(), [](const std::string& packet) {
        return packet.size() == kTsPacketSize &&
               static_cast<uint8_t>(packet.front()) == kTsSyncByte;
      });
  if (!areGood) {
    throw ToolError("the daemon's answer holds no usable " + table +
                    " packets; its log may say why it could not make them");
  }
  std::vector<TsPacket> packets;
  packets.reserve(list.size());
  for (const std::string& packet : list) {
    packets.emplace_back(reinterpret_cast<const uint8_t*>(packet.data()));
  }
  return packets;
}

}  // namespace

SptsWriter::Plan::Plan(const SPTSConfiguration& configuration)
    : pat(packetsOf(configuration.outputTables.patPackets, "PAT")),
      sdt(packetsOf(configuration.outputTables.sdtPackets, "SDT")),
      pmt(packetsOf(configuration.outputTables.pmtPackets, "PMT")),
      routes(configuration.pidItems, pmt.front().pid()) {}

SptsWriter::SptsWriter(const SPTSConfiguration& configuration, Sink sink, Timing timing)
    : plan_(configuration),
      sink_(std::move(sink)),
      timing_(timing),
      exact_(plan_.routes.pcrPid(),
             [this](const TsPacket& packet, int64_t time, int64_t horizon) {
               take(packet, {time, horizon});
             }),
      running_(plan_.routes.pcrPid()) {}

void SptsWriter::push(const TsPacket& packet) {
  if (timing_ == Timing::kExact) {
    exact_.push(packet);
  } else {
    take(packet, running_.at(packet));
  }
}

void SptsWriter::configure(const SPTSConfiguration& configuration) {
  Plan next(configuration);
  exact_.follow(next.routes.pcrPid());  // what it holds back goes as the former answer says
  running_.follow(next.routes.pcrPid());
  noteChanges(next.routes);
  plan_ = std::move(next);
  repetition_.restart();
}

void SptsWriter::noteChanges(const SptsRoutes& next) {
  for (int inputPid = 0; inputPid < kPidCount; ++inputPid) {
    const std::optional<PidRoute>& before = plan_.routes.of(inputPid);
    const std::optional<PidRoute>& after = next.of(inputPid);
    if (after && (!before || before->outputPid != after->outputPid)) {
      counters_.change(after->outputPid);
      continuity_.erase(inputPid);
    }
  }
}

void SptsWriter::take(const TsPacket& packet, const RunningClock::Moment& moment) {
  const TableRepetition::Due due = repetition_.before(moment.time, moment.horizon);
  if (due.patAndPmt) {
    insert(plan_.pat);
    insert(plan_.pmt);
  }
  if (due.sdt) {
    insert(plan_.sdt);
  }
  duration_ = moment.time;
  if (const std::optional<PidRoute>& route = plan_.routes.of(packet.pid())) {
    carry(packet, *route);
  }
}

void SptsWriter::insert(const Packets& table) {
  for (TsPacket packet : table) {
    counters_.number(packet);
    sink_(packet);
    ++tablePackets_;
  }
}

void SptsWriter::carry(const TsPacket& packet, const PidRoute& route) {
  if (route.pcrOnly && !packet.pcr()) {
    return;
  }
  TsPacket copy = route.pcrOnly ? packet.withoutPayload() : packet;
  copy.setPid(route.outputPid);
  if (route.pcrOnly || route.renumbers) {
    counters_.number(copy);
  } else {
    counters_.carry(copy);
  }
  if (!route.pcrOnly && continuity_[packet.pid()].breaksAt(packet)) {
    ++gaps_[route.outputPid];
  }
  sink_(copy);
  ++streamPackets_;
}

}  // namespace tevra::tools
