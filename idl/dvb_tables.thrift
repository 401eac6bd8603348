/**
 * MPEG-2 and DVB tables (ISO/IEC 13818-1, ETSI EN 300 468) and the two ATSC tables that travel with them.
 *
 * Members stand in the order of libdvbpsi's decoded structures. Values narrower on the wire (13-bit PIDs,
 * 5-bit versions, 8-bit table ids) are held unmasked.
 */
namespace * tevra.thrift.dvb_tables

struct Descriptor {
  1: i32 tag
  2: binary data  // payload only: neither tag nor length
}

struct PATProgram {
  1: i32 programNumber  // 0: network PID
  2: i32 pid
}

struct PAT {
  1: i32 transportStreamId
  2: i32 version
  3: bool currentNext
  4: list<PATProgram> programs
}

struct PMTES {
  1: i32 streamType
  2: i32 pid
  3: list<Descriptor> descriptors
}

struct PMT {
  1: i32 programNumber
  2: i32 version
  3: bool currentNext
  4: i32 pcrPid
  5: list<Descriptor> descriptors
  6: list<PMTES> esList
}

struct SDTService {
  1: i32 serviceId
  2: bool eitSchedule
  3: bool eitPresentFollowing
  4: i32 runningStatus
  5: bool freeCA
  6: list<Descriptor> descriptors
}

struct SDT {
  1: i32 tableId
  2: i32 transportStreamId
  3: i32 version
  4: bool currentNext
  5: i32 originalNetworkId
  6: list<SDTService> services
}

struct CAT {
  1: i32 version
  2: bool currentNext
  3: list<Descriptor> descriptors
}

struct NITTS {
  1: i32 transportStreamId
  2: i32 originalNetworkId
  3: list<Descriptor> descriptors
}

// networkId precedes version here, unlike in the other long tables. Clients rely on it.
struct NIT {
  1: i32 tableId
  2: i32 extension
  3: i32 networkId
  4: i32 version
  5: bool currentNext
  6: list<Descriptor> descriptors
  7: list<NITTS> transportStreams
}

struct BATTS {
  1: i32 transportStreamId
  2: i32 originalNetworkId
  3: list<Descriptor> descriptors
}

struct BAT {
  1: i32 tableId
  2: i32 bouquetId
  3: i32 version
  4: bool currentNext
  5: list<Descriptor> descriptors
  6: list<BATTS> transportStreams
}

struct TOT {
  1: i32 tableId
  2: i32 extension
  3: i32 version
  4: bool currentNext
  5: i64 utcTime  // low 40 bits: 16-bit MJD, six BCD digits hhmmss (EN 300 468 annex C)
  6: list<Descriptor> descriptors
}

struct EITEvent {
  1: i32 eventId
  2: i64 startTime  // as TOT.utcTime
  3: i32 duration   // six BCD digits hhmmss
  4: i32 runningStatus
  5: bool freeCA
  6: bool nvod
  7: list<Descriptor> descriptors
}

struct EIT {
  1: i32 tableId
  2: i32 serviceId
  3: i32 version
  4: bool currentNext
  5: i32 transportStreamId
  6: i32 originalNetworkId
  7: i32 segmentLastSectionNumber
  8: i32 lastTableId
  9: list<EITEvent> events
}

struct MGTTBL {
  1: i32 tableType
  2: i32 tableTypePid
  3: i32 tableTypeVersion
  4: i32 numberBytes
  5: list<Descriptor> descriptors
}

struct MGT {
  1: i32 tableId
  2: i32 extension
  3: i32 version
  4: bool currentNext
  5: i32 protocol
  6: i32 tablesDefined
  7: list<MGTTBL> tables
  8: list<Descriptor> descriptors
}

// etmLocation, modulation and serviceType are i16, the other small members i32. Clients rely on it.
struct VCTChannel {
  1: string shortName
  2: i32 majorNumber
  3: i32 minorNumber
  4: i16 modulation
  5: i64 carrierFrequency
  6: i32 channelTsid
  7: i32 programNumber
  8: i16 etmLocation
  9: bool accessControlled
  10: bool hidden
  11: bool pathSelect
  12: bool outOfBand
  13: bool hideGuide
  14: i16 serviceType
  15: i32 sourceId
  16: list<Descriptor> descriptors
}

// The descriptors precede the channels, the reverse of libdvbpsi's order. Clients rely on it.
struct VCT {
  1: i32 tableId
  2: i32 extension
  3: i32 version
  4: bool currentNext
  5: i32 protocol
  6: bool cableVct
  7: list<Descriptor> descriptors
  8: list<VCTChannel> channels
}

struct DVBOutputTables {
  1: PAT pat
  2: SDT sdt
  3: PMT pmt
  4: NIT nit
  5: CAT cat
  6: SDT sdtOther
  7: MGT mgt
  8: VCT vct
}
