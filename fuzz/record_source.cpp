#include "fuzz/record_source.h"

#include <array>

namespace tevra::fuzz {
namespace {

constexpr std::array<int32_t, 8> kTags = {0x09, 0x0A, 0x48, 0x6A, 0x7A, 0x81, 0x73, 0x52};
constexpr std::array<int32_t, 12> kStreamTypes = {1, 2, 3, 4, 6, 15, 16, 17, 27, 36, 0x05, 0x86};
constexpr std::array<const char*, 4> kLanguages = {"eng", "spa", "ndl", "fre"};

/** Mostly a payload as a section can carry it; sometimes one that is too long. */
std::string makePayload(ByteSource& source) {
  const uint8_t kind = source.byte();
  if (kind > 250) {
    return std::string(size_t{kind}, 'x') + source.text(300);
  }
  return source.text(kind > 200 ? 255 : 8);
}

Descriptor makeDescriptor(ByteSource& source) {
  Descriptor descriptor;
  const uint8_t kind = source.byte();
  descriptor.tag = kind < 192 ? kTags[kind % kTags.size()] : source.number();
  descriptor.data = makePayload(source);
  return descriptor;
}

int32_t makeStreamType(ByteSource& source) {
  const uint8_t kind = source.byte();
  return kind < 224 ? kStreamTypes[kind % kStreamTypes.size()] : source.number();
}

/** Programme numbers, service ids and global ids: few, so that tables and requests meet. */
int32_t makeId(ByteSource& source) {
  const uint8_t kind = source.byte();
  return kind < 240 ? kind % 4 : source.number();
}

template <class Entry>
std::vector<Entry> makeTransportStreams(ByteSource& source) {
  std::vector<Entry> result(source.choice(4));
  for (Entry& entry : result) {
    entry.transportStreamId = source.number();
    entry.originalNetworkId = source.number();
    entry.descriptors = makeDescriptors(source);
  }
  return result;
}

EITEvent makeEvent(ByteSource& source) {
  EITEvent event;
  event.eventId = source.number();
  event.startTime = source.time();
  event.duration = source.number();
  event.runningStatus = source.number();
  event.freeCA = source.flag();
  event.nvod = source.flag();
  event.descriptors = makeDescriptors(source);
  return event;
}

EIT makeEit(ByteSource& source) {
  EIT eit;
  eit.tableId = source.number();
  eit.serviceId = makeId(source);
  eit.version = source.number();
  eit.currentNext = source.flag();
  eit.transportStreamId = source.number();
  eit.originalNetworkId = source.number();
  eit.segmentLastSectionNumber = source.number();
  eit.lastTableId = source.number();
  for (size_t events = source.choice(4); events > 0; --events) {
    eit.events.push_back(makeEvent(source));
  }
  return eit;
}

OutputServiceDescription makeOutput(ByteSource& source) {
  OutputServiceDescription output;
  output.globalSID = makeId(source);
  output.nextNode = makeId(source);
  output.outputSID = source.number();
  output.serviceName = source.text(300);
  output.transportStreamId = source.number();
  output.originalNetworkId = source.number();
  output.outputParam = source.number();
  return output;
}

}  // namespace

std::vector<Descriptor> makeDescriptors(ByteSource& source, size_t maximum) {
  std::vector<Descriptor> result(source.choice(maximum + 1));
  for (Descriptor& descriptor : result) {
    descriptor = makeDescriptor(source);
  }
  return result;
}

PAT makePat(ByteSource& source) {
  PAT pat;
  pat.transportStreamId = makeId(source);
  pat.version = source.number();
  pat.currentNext = source.flag();
  pat.programs.resize(source.choice(6));
  for (PATProgram& program : pat.programs) {
    program.programNumber = makeId(source);
    program.pid = source.number();
  }
  return pat;
}

PMT makePmt(ByteSource& source) {
  PMT pmt;
  pmt.programNumber = makeId(source);
  pmt.version = source.number();
  pmt.currentNext = source.flag();
  pmt.pcrPid = source.number();
  pmt.descriptors = makeDescriptors(source);
  const uint8_t kind = source.byte();
  pmt.esList.resize(kind < 250 ? kind % 10U : kind);  // 200 streams need more than a section
  for (PMTES& stream : pmt.esList) {
    stream.streamType = makeStreamType(source);
    stream.pid = source.number();
    stream.descriptors = makeDescriptors(source);
  }
  return pmt;
}

SDT makeSdt(ByteSource& source) {
  SDT sdt;
  sdt.tableId = source.flag() ? 0x42 : source.number();
  sdt.transportStreamId = source.number();
  sdt.version = source.number();
  sdt.currentNext = source.flag();
  sdt.originalNetworkId = source.number();
  sdt.services.resize(source.choice(5));
  for (SDTService& service : sdt.services) {
    service.serviceId = makeId(source);
    service.eitSchedule = source.flag();
    service.eitPresentFollowing = source.flag();
    service.runningStatus = source.number();
    service.freeCA = source.flag();
    service.descriptors = makeDescriptors(source);
  }
  return sdt;
}

CAT makeCat(ByteSource& source) {
  CAT cat;
  cat.version = source.number();
  cat.currentNext = source.flag();
  cat.descriptors = makeDescriptors(source);
  return cat;
}

NIT makeNit(ByteSource& source) {
  NIT nit;
  nit.tableId = source.number();
  nit.networkId = source.number();
  nit.descriptors = makeDescriptors(source);
  nit.transportStreams = makeTransportStreams<NITTS>(source);
  return nit;
}

BAT makeBat(ByteSource& source) {
  BAT bat;
  bat.tableId = source.number();
  bat.bouquetId = source.number();
  bat.descriptors = makeDescriptors(source);
  bat.transportStreams = makeTransportStreams<BATTS>(source);
  return bat;
}

TOT makeTot(ByteSource& source) {
  TOT tot;
  tot.tableId = source.number();
  tot.utcTime = source.time();
  tot.descriptors = makeDescriptors(source);
  return tot;
}

EITMap makeEits(ByteSource& source) {
  EITMap eits;
  for (size_t services = source.choice(4); services > 0; --services) {
    auto& tables = eits[makeId(source)];
    for (size_t count = source.choice(4); count > 0; --count) {
      tables[source.number()] = makeEit(source);
    }
  }
  return eits;
}

LastNodeSettings makeLastNode(ByteSource& source) {
  LastNodeSettings settings;
  settings.globalSID = makeId(source);
  settings.uniqueSID = source.number();
  settings.audioFilter = source.number();
  for (size_t languages = source.choice(5); languages > 0; --languages) {
    AudioLanguage& wanted = settings.audioLanguages.emplace_back();
    const uint8_t kind = source.byte();
    wanted.language = kind < 192 ? kLanguages[kind % kLanguages.size()] : source.text(200);
  }
  settings.lastNodeName = source.text(8);
  return settings;
}

SrvOutputRequest makeRequest(ByteSource& source) {
  SrvOutputRequest request;
  request.inputSID = makeId(source);
  for (size_t outputs = source.choice(4); outputs > 0; --outputs) {
    request.outputs[source.number()] = makeOutput(source);
  }
  for (size_t lists = source.choice(4); lists > 0; --lists) {
    auto& nodes = request.lastNodeSettings[makeId(source)];
    for (size_t count = source.choice(4); count > 0; --count) {
      nodes.push_back(makeLastNode(source));
    }
  }
  return request;
}

}  // namespace tevra::fuzz
