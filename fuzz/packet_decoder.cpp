#include "fuzz/packet_decoder.h"

#include <cstdint>

#include "fuzz/check.h"
#include "tests/synth/transport_packets.h"

namespace tevra::fuzz {
namespace {

constexpr size_t kLongHeader = 8;
constexpr size_t kCrc = 4;

/** Reads a section's bytes in order; never past the end it is given. */
class Reader {
 public:
  Reader(const std::string& bytes, size_t begin, size_t end)
      : bytes_(bytes), next_(begin), end_(end) {
    TORNEL_FUZZ_CHECK(begin <= end && end <= bytes.size());
  }

  [[nodiscard]] bool atEnd() const { return next_ == end_; }

  int byte() {
    TORNEL_FUZZ_CHECK(next_ < end_);
    return static_cast<uint8_t>(bytes_[next_++]);
  }
  int word() {
    const int high = byte();
    return high << 8 | byte();
  }
  int pid() { return word() & 0x1FFF; }

  std::string take(int size) {
    TORNEL_FUZZ_CHECK(static_cast<size_t>(size) <= end_ - next_);
    next_ += static_cast<size_t>(size);
    return bytes_.substr(next_ - static_cast<size_t>(size), static_cast<size_t>(size));
  }

  /** What stands behind a 12-bit length. */
  std::string loop() { return take(word() & 0x0FFF); }

 private:
  const std::string& bytes_;
  size_t next_;
  size_t end_;
};

void addDescriptors(std::vector<Descriptor>& target, const std::string& loop) {
  Reader reader(loop, 0, loop.size());
  while (!reader.atEnd()) {
    Descriptor& descriptor = target.emplace_back();
    descriptor.tag = reader.byte();
    descriptor.data = reader.take(reader.byte());
  }
}

struct Header {
  int extension;
  int version;
  bool currentNext;
};

/** Header of section `number` of a table of `count`; the payload begins behind it. */
Header readHeader(const std::string& section, int tableId, size_t number, size_t count) {
  Reader reader(section, 0, section.size() - kCrc);
  TORNEL_FUZZ_CHECK(reader.byte() == tableId);
  TORNEL_FUZZ_CHECK((reader.word() & 0x8000) != 0);
  Header header{};
  header.extension = reader.word();
  const int flags = reader.byte();
  header.version = (flags >> 1) & 0x1F;
  header.currentNext = (flags & 1) != 0;
  TORNEL_FUZZ_CHECK(reader.byte() == static_cast<int>(number));
  TORNEL_FUZZ_CHECK(reader.byte() == static_cast<int>(count - 1));
  return header;
}

Reader payloadOf(const std::string& section) {
  return {section, kLongHeader, section.size() - kCrc};
}

/** Calls take(header, payload) for every section of the table. */
template <class Take>
size_t receive(const std::vector<std::string>& packets, int pid, int tableId, Take take) {
  const std::vector<std::string> sections = test::sectionsOf(packets, pid);
  TORNEL_FUZZ_CHECK(!sections.empty());
  for (size_t number = 0; number < sections.size(); ++number) {
    Reader payload = payloadOf(sections[number]);
    take(readHeader(sections[number], tableId, number, sections.size()), payload);
  }
  return sections.size();
}

PMTES readStream(Reader& reader) {
  PMTES stream;
  stream.streamType = reader.byte();
  stream.pid = reader.pid();
  addDescriptors(stream.descriptors, reader.loop());
  return stream;
}

SDTService readService(Reader& reader) {
  SDTService service;
  service.serviceId = reader.word();
  const int flags = reader.byte();
  service.eitSchedule = (flags & 2) != 0;
  service.eitPresentFollowing = (flags & 1) != 0;
  const int status = reader.byte();
  service.runningStatus = status >> 5;
  service.freeCA = (status & 0x10) != 0;
  const int size = (status & 0x0F) << 8 | reader.byte();
  addDescriptors(service.descriptors, reader.take(size));
  return service;
}

}  // namespace

Received<PAT> receivePat(const std::vector<std::string>& packets) {
  Received<PAT> result;
  result.sections = receive(packets, 0, 0, [&](const Header& header, Reader& reader) {
    result.table.transportStreamId = header.extension;
    result.table.version = header.version;
    result.table.currentNext = header.currentNext;
    while (!reader.atEnd()) {
      PATProgram& program = result.table.programs.emplace_back();
      program.programNumber = reader.word();
      program.pid = reader.pid();
    }
  });
  return result;
}

Received<SDT> receiveSdt(const std::vector<std::string>& packets) {
  constexpr int kPid = 0x11;
  constexpr int kActual = 0x42;
  Received<SDT> result;
  result.sections = receive(packets, kPid, kActual, [&](const Header& header, Reader& reader) {
    result.table.tableId = kActual;
    result.table.transportStreamId = header.extension;
    result.table.version = header.version;
    result.table.currentNext = header.currentNext;
    result.table.originalNetworkId = reader.word();
    (void)reader.byte();  // reserved
    while (!reader.atEnd()) {
      result.table.services.push_back(readService(reader));
    }
  });
  return result;
}

Received<PMT> receivePmt(const std::vector<std::string>& packets, int pid) {
  constexpr int kTableId = 2;
  Received<PMT> result;
  result.sections = receive(packets, pid, kTableId, [&](const Header& header, Reader& reader) {
    result.table.programNumber = header.extension;
    result.table.version = header.version;
    result.table.currentNext = header.currentNext;
    result.table.pcrPid = reader.pid();
    addDescriptors(result.table.descriptors, reader.loop());
    while (!reader.atEnd()) {
      result.table.esList.push_back(readStream(reader));
    }
  });
  return result;
}

}  // namespace tevra::fuzz
