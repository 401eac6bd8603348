#pragma once

#include <cstddef>
#include <string>
#include <tuple>
#include <vector>

#include "records/records.h"

/**
 * What clients and files rely on, written down once more: the members of every record in the order
 * of their field ids 1, 2, 3, ..., and their types.
 */
namespace tevra::test {

/** Per record: its name, the types of its fields on the wire, `kAll`, a tuple of pointers to its
 * members, and its is-set flags. */
template <class Record>
struct Members;

/** Names typed tests after their records. */
struct RecordName {
  template <class Record>
  static std::string GetName(int /*index*/) {
    return Members<Record>::kName;
  }
};

template <class Record>
inline constexpr size_t kMemberCount = std::tuple_size_v<decltype(Members<Record>::kAll)>;

/** Calls `visit(index, pointer to member)` for every member of the record, in order. */
template <class Record, class Visit>
void forEachMember(Visit visit) {
  size_t index = 0;
  std::apply([&](auto... member) { (visit(index++, member), ...); }, Members<Record>::kAll);
}

template <class Record>
std::vector<bool> flagsOf(const Record& record) {
  return Members<Record>::flags(record.__isset);
}

// The flags are bit fields, which nothing can point to: a macro names each member twice.
#define TORNEL_1(m, a) m(a)
#define TORNEL_2(m, a, ...) m(a), TORNEL_1(m, __VA_ARGS__)
#define TORNEL_3(m, a, ...) m(a), TORNEL_2(m, __VA_ARGS__)
#define TORNEL_4(m, a, ...) m(a), TORNEL_3(m, __VA_ARGS__)
#define TORNEL_5(m, a, ...) m(a), TORNEL_4(m, __VA_ARGS__)
#define TORNEL_6(m, a, ...) m(a), TORNEL_5(m, __VA_ARGS__)
#define TORNEL_7(m, a, ...) m(a), TORNEL_6(m, __VA_ARGS__)
#define TORNEL_8(m, a, ...) m(a), TORNEL_7(m, __VA_ARGS__)
#define TORNEL_9(m, a, ...) m(a), TORNEL_8(m, __VA_ARGS__)
#define TORNEL_16(m, a, b, c, d, e, f, g, ...) \
  TORNEL_7(m, a, b, c, d, e, f, g), TORNEL_9(m, __VA_ARGS__)
#define TORNEL_POINTER(member) &R::member
#define TORNEL_FLAG(member) isset.member

#define TORNEL_RECORD(Record, types, count, ...)                                               \
  template <>                                                                                  \
  struct Members<Record> {                                                                     \
    using R = Record;                                                                          \
    static constexpr const char* kName = #Record;                                              \
    static constexpr const char* kTypes = types;                                               \
    static constexpr auto kAll = std::make_tuple(TORNEL_##count(TORNEL_POINTER, __VA_ARGS__)); \
    template <class Flags>                                                                     \
    static std::vector<bool> flags(const Flags& isset) {                                       \
      return {TORNEL_##count(TORNEL_FLAG, __VA_ARGS__)};                                       \
    }                                                                                          \
  };

TORNEL_RECORD(Descriptor, "i32 string", 2, tag, data)
TORNEL_RECORD(PATProgram, "i32 i32", 2, programNumber, pid)
TORNEL_RECORD(PAT, "i32 i32 bool list<struct>", 4, transportStreamId, version, currentNext,
              programs)
TORNEL_RECORD(PMTES, "i32 i32 list<struct>", 3, streamType, pid, descriptors)
TORNEL_RECORD(PMT, "i32 i32 bool i32 list<struct> list<struct>", 6, programNumber, version,
              currentNext, pcrPid, descriptors, esList)
TORNEL_RECORD(SDTService, "i32 bool bool i32 bool list<struct>", 6, serviceId, eitSchedule,
              eitPresentFollowing, runningStatus, freeCA, descriptors)
TORNEL_RECORD(SDT, "i32 i32 i32 bool i32 list<struct>", 6, tableId, transportStreamId, version,
              currentNext, originalNetworkId, services)
TORNEL_RECORD(CAT, "i32 bool list<struct>", 3, version, currentNext, descriptors)
TORNEL_RECORD(NITTS, "i32 i32 list<struct>", 3, transportStreamId, originalNetworkId, descriptors)
TORNEL_RECORD(NIT, "i32 i32 i32 i32 bool list<struct> list<struct>", 7, tableId, extension,
              networkId, version, currentNext, descriptors, transportStreams)
TORNEL_RECORD(BATTS, "i32 i32 list<struct>", 3, transportStreamId, originalNetworkId, descriptors)
TORNEL_RECORD(BAT, "i32 i32 i32 bool list<struct> list<struct>", 6, tableId, bouquetId, version,
              currentNext, descriptors, transportStreams)
TORNEL_RECORD(TOT, "i32 i32 i32 bool i64 list<struct>", 6, tableId, extension, version, currentNext,
              utcTime, descriptors)
TORNEL_RECORD(EITEvent, "i32 i64 i32 i32 bool bool list<struct>", 7, eventId, startTime, duration,
              runningStatus, freeCA, nvod, descriptors)
TORNEL_RECORD(EIT, "i32 i32 i32 bool i32 i32 i32 i32 list<struct>", 9, tableId, serviceId, version,
              currentNext, transportStreamId, originalNetworkId, segmentLastSectionNumber,
              lastTableId, events)
TORNEL_RECORD(MGTTBL, "i32 i32 i32 i32 list<struct>", 5, tableType, tableTypePid, tableTypeVersion,
              numberBytes, descriptors)
TORNEL_RECORD(MGT, "i32 i32 i32 bool i32 i32 list<struct> list<struct>", 8, tableId, extension,
              version, currentNext, protocol, tablesDefined, tables, descriptors)
TORNEL_RECORD(VCTChannel,
              "string i32 i32 i16 i64 i32 i32 i16 bool bool bool bool bool i16 i32 list<struct>",
              16, shortName, majorNumber, minorNumber, modulation, carrierFrequency, channelTsid,
              programNumber, etmLocation, accessControlled, hidden, pathSelect, outOfBand,
              hideGuide, serviceType, sourceId, descriptors)
TORNEL_RECORD(VCT, "i32 i32 i32 bool i32 bool list<struct> list<struct>", 8, tableId, extension,
              version, currentNext, protocol, cableVct, descriptors, channels)
TORNEL_RECORD(DVBOutputTables, "struct struct struct struct struct struct struct struct", 8, pat,
              sdt, pmt, nit, cat, sdtOther, mgt, vct)

TORNEL_RECORD(PIDItem, "i32 i32 i32", 3, inputPid, outputPid, attributes)
TORNEL_RECORD(OutputTables, "i32 i32 list<string> list<string> list<string> list<string> struct", 7,
              outputParam1, outputParam2, patPackets, sdtPackets, pmtPackets, otherPackets,
              dvbTables)
TORNEL_RECORD(SPTSConfiguration, "list<struct> struct", 2, pidItems, outputTables)

TORNEL_RECORD(AudioLanguage, "string", 1, language)
TORNEL_RECORD(LastNodeSettings, "i32 i32 i32 list<struct> string i32 i32", 7, globalSID, uniqueSID,
              audioFilter, audioLanguages, lastNodeName, lastNodeParam1, lastNodeParam2)

TORNEL_RECORD(SIService, "string", 1, name)
TORNEL_RECORD(TableStore, "i32 struct struct struct", 4, restartCounter, pat, sdt, pmt)
TORNEL_RECORD(TableStoreFile, "map<i32,struct>", 1, tableStores)
TORNEL_RECORD(EITTableVersionStore, "i32 map<i32,i32>", 2, restartCounter, versions)
TORNEL_RECORD(EITTableVersionStoreFile, "map<i32,struct>", 1, versionStores)
TORNEL_RECORD(PIDRemap, "i32 map<i32,i32> map<i32,i32> i32 i32", 5, transportStreamId,
              inputToOutput, outputToInput, nextPIDCounter, moduleSlot)
TORNEL_RECORD(OutputServiceDescription, "i32 i32 i32 string i32 i32 i32", 7, globalSID, nextNode,
              outputSID, serviceName, transportStreamId, originalNetworkId, outputParam)
TORNEL_RECORD(SrvOutputRequest, "i32 map<i32,struct> map<i32,list<struct>>", 3, inputSID, outputs,
              lastNodeSettings)

}  // namespace tevra::test
