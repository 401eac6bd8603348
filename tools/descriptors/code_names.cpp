#include "tools/descriptors/code_names.h"

#include "tools/descriptors/name_table.h"

namespace tevra::tools {
namespace {

/** From 0x80 on as ATSC, SCTE, SMPTE and DVB have registered or use them. */
constexpr std::array<NamedCode, 62> kStreamTypes = {{
    {0x01, "MPEG-1 video"},
    {0x02, "MPEG-2 video"},
    {0x03, "MPEG-1 audio"},
    {0x04, "MPEG-2 audio"},
    {0x05, "private sections"},
    {0x06, "private PES"},
    {0x07, "MHEG"},
    {0x08, "DSM-CC of ISO/IEC 13818-1 annex A"},
    {0x09, "H.222.1"},
    {0x0A, "DSM-CC type A"},
    {0x0B, "DSM-CC type B"},
    {0x0C, "DSM-CC type C"},
    {0x0D, "DSM-CC type D"},
    {0x0E, "auxiliary"},
    {0x0F, "AAC audio in ADTS"},
    {0x10, "MPEG-4 video"},
    {0x11, "AAC audio in LATM"},
    {0x12, "MPEG-4 streams in PES"},
    {0x13, "MPEG-4 streams in sections"},
    {0x14, "synchronised download protocol"},
    {0x15, "metadata in PES"},
    {0x16, "metadata in sections"},
    {0x17, "metadata in data carousel"},
    {0x18, "metadata in object carousel"},
    {0x19, "metadata in synchronised download protocol"},
    {0x1A, "MPEG-2 IPMP"},
    {0x1B, "AVC video"},
    {0x1C, "MPEG-4 raw audio"},
    {0x1D, "MPEG-4 text"},
    {0x1E, "auxiliary video"},
    {0x1F, "SVC video"},
    {0x20, "MVC video"},
    {0x21, "JPEG 2000 video"},
    {0x22, "MPEG-2 video, additional view"},
    {0x23, "AVC video, additional view"},
    {0x24, "HEVC video"},
    {0x25, "HEVC video, temporal subset"},
    {0x26, "MVCD video"},
    {0x27, "timeline and external media"},
    {0x28, "HEVC video, enhancement of annex G"},
    {0x29, "HEVC video, temporal enhancement of annex G"},
    {0x2A, "HEVC video, enhancement of annex H"},
    {0x2B, "HEVC video, temporal enhancement of annex H"},
    {0x2C, "green access units"},
    {0x2D, "MPEG-H 3D audio"},
    {0x2E, "MPEG-H 3D audio, auxiliary"},
    {0x2F, "quality access units"},
    {0x30, "media orchestration access units"},
    {0x31, "HEVC video, tiles"},
    {0x32, "JPEG XS video"},
    {0x33, "VVC video"},
    {0x34, "VVC video, temporal subset"},
    {0x35, "EVC video"},
    {0x7F, "IPMP"},
    {0x80, "DigiCipher II video"},
    {0x81, "AC-3 audio (ATSC)"},
    {0x82, "SCTE 27 subtitles"},
    {0x83, "SCTE 19 isochronous data"},
    {0x86, "SCTE 35 splice information"},
    {0x87, "E-AC-3 audio (ATSC)"},
    {0x90, "MPE-FEC sections"},
    {0xEA, "VC-1 video"},
}};

constexpr std::array<NamedCode, 6> kRunningStatus = {{
    {0, "undefined"},
    {1, "not running"},
    {2, "starts in a few seconds"},
    {3, "pausing"},
    {4, "running"},
    {5, "service off-air"},
}};

constexpr std::array<NamedCode, 29> kServiceTypes = {{
    {0x01, "digital television"},
    {0x02, "digital radio"},
    {0x03, "teletext"},
    {0x04, "NVOD reference"},
    {0x05, "NVOD time-shifted"},
    {0x06, "mosaic"},
    {0x07, "FM radio"},
    {0x08, "DVB SRM"},
    {0x0A, "advanced codec digital radio"},
    {0x0B, "AVC mosaic"},
    {0x0C, "data broadcast"},
    {0x0E, "RCS Map"},
    {0x0F, "RCS FLS"},
    {0x10, "DVB MHP"},
    {0x11, "MPEG-2 HD digital television"},
    {0x16, "AVC SD digital television"},
    {0x17, "AVC SD NVOD time-shifted"},
    {0x18, "AVC SD NVOD reference"},
    {0x19, "AVC HD digital television"},
    {0x1A, "AVC HD NVOD time-shifted"},
    {0x1B, "AVC HD NVOD reference"},
    {0x1C, "AVC frame compatible plano-stereoscopic HD digital television"},
    {0x1D, "AVC frame compatible plano-stereoscopic HD NVOD time-shifted"},
    {0x1E, "AVC frame compatible plano-stereoscopic HD NVOD reference"},
    {0x1F, "HEVC digital television"},
    {0x20, "HEVC UHD digital television"},
    {0x21, "VVC digital television"},
    {0x22, "AVS3 digital television"},
    {0xFF, "reserved"},
}};

}  // namespace

std::string streamTypeName(int streamType) {
  return nameIn(kStreamTypes, streamType);
}

std::string runningStatusName(int runningStatus) {
  return nameIn(kRunningStatus, runningStatus);
}

std::string serviceTypeName(int serviceType) {
  return nameIn(kServiceTypes, serviceType);
}

}  // namespace tevra::tools
