#include "tools/descriptors/code_names.h"

#include "tools/descriptors/name_table.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr std::array<NamedCode, 36> kStreamTypes = {{
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
    {0x24, "HEVC video"},
    {0x33, "VVC video"},
    {0x7F, "IPMP"},
}};

constexpr std::array<NamedCode, 4> kAudioTypes = {{
    {0x00, "undefined"},
    {0x01, "clean effects"},
    {0x02, "hearing impaired"},
    {0x03, "visual impaired commentary"},
}};

constexpr std::array<NamedCode, 11> kHierarchyTypes = {{
    {1, "spatial scalability"},
    {2, "SNR scalability"},
    {3, "temporal scalability"},
    {4, "data partitioning"},
    {5, "extension bitstream"},
    {6, "private stream"},
    {7, "multi-view profile"},
    {8, "combined scalability or MV-HEVC"},
    {9, "MVC or MVCD sub-bitstream"},
    {10, "auxiliary picture layer"},
    {15, "base layer"},
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

constexpr std::array<NamedCode, 14> kLinkageTypes = {{
    {0x01, "information service"},
    {0x02, "EPG service"},
    {0x03, "CA replacement service"},
    {0x04, "transport stream with complete network or bouquet SI"},
    {0x05, "service replacement service"},
    {0x06, "data broadcast service"},
    {0x07, "RCS Map"},
    {0x08, "mobile hand-over"},
    {0x09, "system software update service"},
    {0x0A, "transport stream with SSU BAT or NIT"},
    {0x0B, "IP/MAC notification service"},
    {0x0C, "transport stream with INT BAT or NIT"},
    {0x0D, "event linkage"},
    {0x0E, "extended event linkage"},
}};

constexpr std::array<NamedCode, 3> kHandOverTypes = {{
    {1, "identical service in a neighbouring country"},
    {2, "local variation of the same service"},
    {3, "associated service"},
}};

constexpr std::array<NamedCode, 5> kTeletextTypes = {{
    {1, "initial page"},
    {2, "subtitle page"},
    {3, "additional information page"},
    {4, "programme schedule page"},
    {5, "subtitle page for the hearing impaired"},
}};

constexpr std::array<NamedCode, 6> kVbiServices = {{
    {1, "EBU teletext"},
    {2, "inverted teletext"},
    {4, "VPS"},
    {5, "WSS"},
    {6, "closed captioning"},
    {7, "monochrome 4:2:2 samples"},
}};

constexpr std::array<NamedCode, 14> kDataBroadcasts = {{
    {0x0001, "data pipe"},
    {0x0002, "asynchronous data stream"},
    {0x0003, "synchronous data stream"},
    {0x0004, "synchronised data stream"},
    {0x0005, "multiprotocol encapsulation"},
    {0x0006, "data carousel"},
    {0x0007, "object carousel"},
    {0x0008, "DVB ATM streams"},
    {0x0009, "higher protocols on asynchronous data streams"},
    {0x000A, "system software update"},
    {0x000B, "IP/MAC notification"},
    {0x00F0, "MHP object carousel"},
    {0x0106, "MHEG-5"},
    {0x0123, "HbbTV carousel"},
}};

constexpr std::array<NamedCode, 4> kCridTypes = {{
    {0x00, "undefined"},
    {0x01, "programme"},
    {0x02, "series"},
    {0x03, "recommendation"},
}};

constexpr std::array<NamedCode, 4> kApplicationTypes = {{
    {0x0001, "DVB-J"},
    {0x0002, "DVB-HTML"},
    {0x0008, "MHEG-5"},
    {0x0010, "HbbTV"},
}};

constexpr std::array<NamedCode, 2> kPrivateDataSpecifiers = {{
    {0x28, "EACEM"},
    {0x29, "NorDig"},
}};

constexpr int kFirstPrivateCridType = 0x20;
constexpr int kYoungestRating = 0x01;
constexpr int kOldestRating = 0x0F;

}  // namespace

std::string streamTypeName(int streamType) {
  return nameIn(kStreamTypes, streamType);
}

std::string streamTypeText(int streamType) {
  const std::string name = streamTypeName(streamType);
  return name.empty() ? "stream type " + hex(streamType, 2) : name;
}

std::string audioTypeName(int audioType) {
  return nameIn(kAudioTypes, audioType);
}

std::string hierarchyTypeName(int hierarchyType) {
  return nameIn(kHierarchyTypes, hierarchyType);
}

std::string runningStatusName(int runningStatus) {
  return nameIn(kRunningStatus, runningStatus);
}

std::string serviceTypeName(int serviceType) {
  return nameIn(kServiceTypes, serviceType);
}

std::string linkageTypeName(int linkageType) {
  return nameIn(kLinkageTypes, linkageType);
}

std::string handOverTypeName(int handOverType) {
  return nameIn(kHandOverTypes, handOverType);
}

std::string teletextTypeName(int teletextType) {
  return nameIn(kTeletextTypes, teletextType);
}

std::string vbiServiceName(int dataServiceId) {
  return nameIn(kVbiServices, dataServiceId);
}

std::string parentalRatingName(int rating) {
  if (rating == 0) {
    return "undefined";
  }
  const bool isAge = rating >= kYoungestRating && rating <= kOldestRating;
  return isAge ? "from age " + std::to_string(rating + 3) : "defined by the broadcaster";
}

std::string dataBroadcastName(int dataBroadcastId) {
  return nameIn(kDataBroadcasts, dataBroadcastId);
}

std::string cridTypeName(int cridType) {
  return cridType >= kFirstPrivateCridType ? "user private" : nameIn(kCridTypes, cridType);
}

std::string applicationTypeName(int applicationType) {
  return nameIn(kApplicationTypes, applicationType);
}

std::string privateDataSpecifierName(int specifier) {
  return nameIn(kPrivateDataSpecifiers, specifier);
}

}  // namespace tevra::tools
