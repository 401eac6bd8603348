#pragma once

#include <array>
#include <cstdint>

#include "records/records.h"

/** Tables of exact sizes, the same at every run. */
namespace tevra::bench {

inline constexpr int32_t kServiceId = 101;
inline constexpr int32_t kPmtPid = 0x100;

/** A programme of `streams` streams, of which every third is audio with a language; `descriptors`
 * are dealt out to the streams in turn. */
[[nodiscard]] PMT samplePmt(int streams, int descriptors, int32_t serviceId = kServiceId);

/** Lists so many programmes, from the sample's on. */
[[nodiscard]] PAT samplePat(int services = 1);

/** Describes one service, the sample's. */
[[nodiscard]] SDT sampleSdt();

/** The size of a schedule. */
struct ScheduleSize {
  int services;
  int tables;  ///< EITs of a service, table ids from 0x50
  int events;  ///< of an EIT, each with two descriptors of 100 bytes
};

/** The sizes that are measured, ascending: 10 to 100,800 events. */
inline constexpr std::array<ScheduleSize, 6> kScheduleSizes = {
    {{1, 1, 10}, {1, 2, 50}, {5, 4, 50}, {20, 8, 60}, {25, 8, 50}, {100, 16, 63}}};

/** The schedule of a full multiplex, 9,600 events. */
inline constexpr ScheduleSize kFullSchedule = kScheduleSizes[3];

[[nodiscard]] constexpr int eventCount(ScheduleSize size) {
  return size.services * size.tables * size.events;
}

[[nodiscard]] EITMap sampleSchedule(ScheduleSize size);

/** One present/following sub-table, the sample service's. */
[[nodiscard]] EITMap samplePresentFollowing();

/** A broadcast time so many minutes after midnight of some day. */
[[nodiscard]] TOT sampleTot(int minutes);

/** Asks for one output of a service, under an id of its own. */
[[nodiscard]] SrvOutputRequest sampleRequest(int32_t serviceId = kServiceId,
                                             int32_t outputSID = kServiceId);

///@{
/** What the files hold for so many services, from the sample's on: of 10 streams and 17
 * descriptors, of eight tables of a schedule. */
[[nodiscard]] TableStoreFile sampleStores(int services);
[[nodiscard]] EITTableVersionStoreFile sampleVersions(int services);
///@}

}  // namespace tevra::bench
