#include "tools/si/table_decoder.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tevra::tools {
namespace {

constexpr int kFreeCa = 0x1000;
constexpr int kLengthMask = 0x0FFF;
constexpr size_t kTimeSize = 5;
constexpr size_t kDurationSize = 3;
constexpr int64_t kNvodStartTime = 0xFFFFF000;

template <class Table>
Table begun(const Section& header) {
  Table table;
  table.version = header.version;
  table.currentNext = header.isCurrent;
  return table;
}

/** running_status, free_CA_mode and the descriptors, of a service or an event. */
template <class Entry>
void readStatusAndDescriptors(SectionReader& reader, Entry& entry) {
  const int bits = reader.word();
  entry.runningStatus = bits >> 13;
  entry.freeCA = (bits & kFreeCa) != 0;
  entry.descriptors = reader.descriptors(static_cast<size_t>(bits & kLengthMask));
}

PAT readPat(const Section& header, SectionReader& reader) {
  PAT pat = begun<PAT>(header);
  pat.transportStreamId = header.extension;
  reader.rest([&] {
    PATProgram program;
    program.programNumber = reader.word();
    program.pid = reader.pid();
    if (program.pid != 0) {
      pat.programs.push_back(program);
    }
  });
  return pat;
}

CAT readCat(const Section& header, SectionReader& reader) {
  CAT cat = begun<CAT>(header);
  cat.descriptors = reader.descriptors();
  return cat;
}

PMT readPmt(const Section& header, SectionReader& reader) {
  PMT pmt = begun<PMT>(header);
  pmt.programNumber = header.extension;
  pmt.pcrPid = reader.pid();
  pmt.descriptors = reader.descriptors(reader.length());
  reader.rest([&] {
    PMTES& stream = pmt.esList.emplace_back();
    stream.streamType = reader.byte();
    stream.pid = reader.pid();
    stream.descriptors = reader.descriptors(reader.length());
  });
  return pmt;
}

SDT readSdt(const Section& header, SectionReader& reader) {
  SDT sdt = begun<SDT>(header);
  sdt.tableId = header.tableId;
  sdt.transportStreamId = header.extension;
  sdt.originalNetworkId = reader.word();
  reader.skip(1);  // reserved
  reader.rest([&] {
    SDTService& service = sdt.services.emplace_back();
    service.serviceId = reader.word();
    const int eitFlags = reader.byte();
    service.eitSchedule = (eitFlags & 0x02) != 0;
    service.eitPresentFollowing = (eitFlags & 0x01) != 0;
    readStatusAndDescriptors(reader, service);
  });
  return sdt;
}

/** A NIT or BAT, which are alike in all but the name of their id. */
template <class Network>
Network readNetwork(const Section& header, SectionReader& reader) {
  auto network = begun<Network>(header);
  network.tableId = header.tableId;
  network.descriptors = reader.descriptors(reader.length());
  reader.loop(reader.length(), [&] {
    auto& stream = network.transportStreams.emplace_back();
    stream.transportStreamId = reader.word();
    stream.originalNetworkId = reader.word();
    stream.descriptors = reader.descriptors(reader.length());
  });
  return network;
}

NIT readNit(const Section& header, SectionReader& reader) {
  NIT nit = readNetwork<NIT>(header, reader);
  nit.extension = header.extension;
  nit.networkId = header.extension;
  return nit;
}

BAT readBat(const Section& header, SectionReader& reader) {
  BAT bat = readNetwork<BAT>(header, reader);
  bat.bouquetId = header.extension;
  return bat;
}

TOT readTot(const Section& header, SectionReader& reader) {
  TOT tot = begun<TOT>(header);
  tot.tableId = header.tableId;
  tot.utcTime = reader.number(kTimeSize);
  tot.descriptors = reader.descriptors(reader.length());
  return tot;
}

EIT readEit(const Section& header, SectionReader& reader) {
  EIT eit = begun<EIT>(header);
  eit.tableId = header.tableId;
  eit.serviceId = header.extension;
  eit.transportStreamId = reader.word();
  eit.originalNetworkId = reader.word();
  eit.segmentLastSectionNumber = reader.byte();
  eit.lastTableId = reader.byte();
  reader.rest([&] {
    EITEvent& event = eit.events.emplace_back();
    event.eventId = reader.word();
    event.startTime = reader.number(kTimeSize);
    event.duration = static_cast<int32_t>(reader.number(kDurationSize));
    readStatusAndDescriptors(reader, event);
    event.nvod = (event.startTime & kNvodStartTime) == kNvodStartTime && event.runningStatus == 0;
  });
  return eit;
}

/** Moves the lists of the next section's table behind those of a table. */
struct Joiner {
  SiTable& next;

  void operator()(PAT& table) const { join(table, &PAT::programs); }
  void operator()(CAT& table) const { join(table, &CAT::descriptors); }
  void operator()(PMT& table) const { join(table, &PMT::descriptors, &PMT::esList); }
  void operator()(SDT& table) const { join(table, &SDT::services); }
  void operator()(NIT& table) const { join(table, &NIT::descriptors, &NIT::transportStreams); }
  void operator()(BAT& table) const { join(table, &BAT::descriptors, &BAT::transportStreams); }
  void operator()(TOT& table) const { join(table, &TOT::descriptors); }
  void operator()(EIT& table) const { join(table, &EIT::events); }

 private:
  template <class Table, class... Lists>
  void join(Table& table, Lists... lists) const {
    auto& more = std::get<Table>(next);
    const auto append = [](auto& list, auto& rest) {
      std::move(rest.begin(), rest.end(), std::back_inserter(list));
    };
    (append(table.*lists, more.*lists), ...);
  }
};

}  // namespace

SiTable readContent(const Section& header, SectionReader& reader) {
  switch (header.tableId) {
    case kTablePat:
      return readPat(header, reader);
    case kTableCat:
      return readCat(header, reader);
    case kTablePmt:
      return readPmt(header, reader);
    case kTableSdtActual:
      return readSdt(header, reader);
    case kTableNitActual:
      return readNit(header, reader);
    case kTableBat:
      return readBat(header, reader);
    case kTableTot:
      return readTot(header, reader);
    default:
      return readEit(header, reader);
  }
}

SiTable tableOf(std::vector<Section> sections) {
  SiTable table = std::move(sections.front().content);
  std::for_each(std::next(sections.begin()), sections.end(),
                [&table](Section& next) { std::visit(Joiner{next.content}, table); });
  return table;
}

}  // namespace tevra::tools
