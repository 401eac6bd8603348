#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "im_SIControlSrv.h"
#include "tests/support/tables.h"

/**
 * A small multiplex: a television service with two audio languages, subtitles, a stream that is not
 * carried and a CA descriptor, and a radio service.
 *
 * Given in the order PAT, television PMT, CAT, radio PMT to a fresh daemon of the default module,
 * its PIDs are mapped as the kOut constants say.
 */
namespace tevra::test {

class ControlClient;

inline constexpr int32_t kTelevision = 100;  // service ids
inline constexpr int32_t kRadio = 200;

inline constexpr int32_t kTransportStreamId = 1;

// Input PIDs.
inline constexpr int32_t kNitPid = 0x10;
inline constexpr int32_t kTelevisionPmtPid = 0x100;
inline constexpr int32_t kVideoPid = 0x101;  // carries the PCR
inline constexpr int32_t kEnglishPid = 0x102;
inline constexpr int32_t kSpanishPid = 0x103;
inline constexpr int32_t kSubtitlesPid = 0x104;
inline constexpr int32_t kSplicePid = 0x105;  // of a type that is not carried
inline constexpr int32_t kEcmPid = 0x1FE;
inline constexpr int32_t kEmmPid = 0x1F0;
inline constexpr int32_t kRadioPmtPid = 0x200;
inline constexpr int32_t kRadioAudioPid = 0x202;

// Output PIDs, from 101 up in the order in which the tables name them.
inline constexpr int32_t kOutNit = 101;
inline constexpr int32_t kOutTelevisionPmt = 102;
inline constexpr int32_t kOutRadioPmt = 103;
inline constexpr int32_t kOutVideo = 104;
inline constexpr int32_t kOutEcm = 105;
inline constexpr int32_t kOutEnglish = 106;
inline constexpr int32_t kOutSpanish = 107;
inline constexpr int32_t kOutSubtitles = 108;
inline constexpr int32_t kOutEmm = 109;
inline constexpr int32_t kOutRadioAudio = 110;

/** A CA descriptor (ISO/IEC 13818-1, 2.6.16) with two bytes of private data. */
[[nodiscard]] Descriptor caDescriptor(int32_t pid);

[[nodiscard]] PAT multiplexPat(int32_t transportStreamId = kTransportStreamId);
[[nodiscard]] SDT multiplexSdt();
[[nodiscard]] CAT multiplexCat();
[[nodiscard]] NIT multiplexNit();
[[nodiscard]] BAT multiplexBat();
[[nodiscard]] PMT televisionPmt();
[[nodiscard]] PMT radioPmt();

/** A TOT of the moment `utc`. */
[[nodiscard]] TOT totAt(std::time_t utc);

/** `utc`, from 1858-11-17 on, as a DVB time value (EN 300 468 annex C). */
[[nodiscard]] int64_t dvbTime(std::time_t utc);

/** An EIT sub-table with one event that starts at `start`. */
[[nodiscard]] EIT eit(int32_t serviceId, int32_t tableId, std::time_t start);

/** PAT, SDT, both PMTs and the CAT, in the order above. */
void giveMultiplex(ControlClient& client);

[[nodiscard]] LastNodeSettings lastNode(int32_t globalSID, int32_t uniqueSID,
                                        const std::vector<std::string>& languages);

/** An output that leaves the chain here: global id 7, service id 1201, `name`, the last node the
 * output itself, English audio only. */
[[nodiscard]] SrvOutputRequest televisionRequest(const std::string& name = "Uno HD");

/** The same of the radio service: global id 8, service id 1202, all audio. */
[[nodiscard]] SrvOutputRequest radioRequest();

///@{
/** The only entry of the answer; raises std::runtime_error when it has not just one. */
[[nodiscard]] SPTSConfiguration onlyOutput(ControlClient& client, const SrvOutputRequest& request);
[[nodiscard]] SPTSConfiguration onlyOutput(thrift::in_module::im_SIControlSrvIf& service,
                                           const SrvOutputRequest& request);
///@}

}  // namespace tevra::test
