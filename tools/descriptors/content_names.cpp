// The names that need two codes: genres and components (EN 300 468, 6.2.9 and 6.2.8).

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/name_table.h"

namespace tevra::tools {
namespace {

/** Level 1 and 2 nibbles; those with a level 2 of 0 name the whole genre. */
constexpr std::array<NamedCode, 81> kGenres = {{
    {0x10, "movie/drama"},
    {0x11, "detective/thriller"},
    {0x12, "adventure/western/war"},
    {0x13, "science fiction/fantasy/horror"},
    {0x14, "comedy"},
    {0x15, "soap/melodrama/folkloric"},
    {0x16, "romance"},
    {0x17, "serious/classical/religious/historical movie/drama"},
    {0x18, "adult movie/drama"},
    {0x20, "news/current affairs"},
    {0x21, "news/weather report"},
    {0x22, "news magazine"},
    {0x23, "documentary"},
    {0x24, "discussion/interview/debate"},
    {0x30, "show/game show"},
    {0x31, "game show/quiz/contest"},
    {0x32, "variety show"},
    {0x33, "talk show"},
    {0x40, "sports"},
    {0x41, "special events"},
    {0x42, "sports magazines"},
    {0x43, "football/soccer"},
    {0x44, "tennis/squash"},
    {0x45, "team sports"},
    {0x46, "athletics"},
    {0x47, "motor sport"},
    {0x48, "water sport"},
    {0x49, "winter sports"},
    {0x4A, "equestrian"},
    {0x4B, "martial sports"},
    {0x50, "children's/youth programmes"},
    {0x51, "pre-school children's programmes"},
    {0x52, "entertainment programmes for 6 to 14"},
    {0x53, "entertainment programmes for 10 to 16"},
    {0x54, "informational/educational/school programmes"},
    {0x55, "cartoons/puppets"},
    {0x60, "music/ballet/dance"},
    {0x61, "rock/pop"},
    {0x62, "serious/classical music"},
    {0x63, "folk/traditional music"},
    {0x64, "jazz"},
    {0x65, "musical/opera"},
    {0x66, "ballet"},
    {0x70, "arts/culture"},
    {0x71, "performing arts"},
    {0x72, "fine arts"},
    {0x73, "religion"},
    {0x74, "popular culture/traditional arts"},
    {0x75, "literature"},
    {0x76, "film/cinema"},
    {0x77, "experimental film/video"},
    {0x78, "broadcasting/press"},
    {0x79, "new media"},
    {0x7A, "arts/culture magazines"},
    {0x7B, "fashion"},
    {0x80, "social/political issues/economics"},
    {0x81, "magazines/reports/documentary"},
    {0x82, "economics/social advisory"},
    {0x83, "remarkable people"},
    {0x90, "education/science/factual topics"},
    {0x91, "nature/animals/environment"},
    {0x92, "technology/natural sciences"},
    {0x93, "medicine/physiology/psychology"},
    {0x94, "foreign countries/expeditions"},
    {0x95, "social/spiritual sciences"},
    {0x96, "further education"},
    {0x97, "languages"},
    {0xA0, "leisure hobbies"},
    {0xA1, "tourism/travel"},
    {0xA2, "handicraft"},
    {0xA3, "motoring"},
    {0xA4, "fitness and health"},
    {0xA5, "cooking"},
    {0xA6, "advertisement/shopping"},
    {0xA7, "gardening"},
    {0xB0, "original language"},
    {0xB1, "black and white"},
    {0xB2, "unpublished"},
    {0xB3, "live broadcast"},
    {0xB4, "plano-stereoscopic"},
    {0xB5, "local or regional"},
}};

/** Of stream_content 1 and 5: picture format; from 9 on in high definition. */
constexpr std::array<NamedCode, 4> kPictureFormats = {{
    {0, "4:3"},
    {1, "16:9 with pan vectors"},
    {2, "16:9"},
    {3, "wider than 16:9"},
}};

constexpr std::array<NamedCode, 7> kMpegAudio = {{
    {0x01, "mono"},
    {0x02, "dual mono"},
    {0x03, "stereo"},
    {0x04, "multi-lingual, multi-channel"},
    {0x05, "surround sound"},
    {0x40, "description for the visually impaired"},
    {0x41, "for the hard of hearing"},
}};

constexpr std::array<NamedCode, 18> kSubtitles = {{
    {0x01, "EBU teletext subtitles"},
    {0x02, "associated EBU teletext"},
    {0x03, "VBI data"},
    {0x10, "DVB subtitles"},
    {0x11, "DVB subtitles for 4:3"},
    {0x12, "DVB subtitles for 16:9"},
    {0x13, "DVB subtitles for 2.21:1"},
    {0x14, "DVB subtitles for HD"},
    {0x15, "DVB subtitles with disparity for HD"},
    {0x16, "DVB subtitles for UHD"},
    {0x20, "DVB subtitles for the hard of hearing"},
    {0x21, "DVB subtitles for the hard of hearing, 4:3"},
    {0x22, "DVB subtitles for the hard of hearing, 16:9"},
    {0x23, "DVB subtitles for the hard of hearing, 2.21:1"},
    {0x24, "DVB subtitles for the hard of hearing, HD"},
    {0x25, "DVB subtitles for the hard of hearing with disparity, HD"},
    {0x26, "DVB subtitles for the hard of hearing, UHD"},
    {0x30, "open sign language interpretation"},
}};

constexpr std::array<NamedCode, 14> kAacTypes = {{
    {0x01, "mono"},
    {0x03, "stereo"},
    {0x05, "surround sound"},
    {0x40, "description for the visually impaired"},
    {0x41, "for the hard of hearing"},
    {0x42, "receiver-mixed supplementary audio"},
    {0x43, "HE-AAC v2 stereo"},
    {0x44, "HE-AAC v2, description for the visually impaired"},
    {0x45, "HE-AAC v2, for the hard of hearing"},
    {0x46, "HE-AAC v2, receiver-mixed supplementary audio"},
    {0x47, "receiver-mixed description for the visually impaired"},
    {0x48, "broadcast-mixed description for the visually impaired"},
    {0x49, "HE-AAC v2, receiver-mixed description for the visually impaired"},
    {0x4A, "HE-AAC v2, broadcast-mixed description for the visually impaired"},
}};

/** Bits b2 to b0 of an AC-3 component_type. */
constexpr std::array<NamedCode, 7> kAc3Channels = {{
    {0, "mono"},
    {1, "1+1 mode"},
    {2, "stereo"},
    {3, "stereo with surround encoded"},
    {4, "multichannel"},
    {5, "multichannel over 5.1"},
    {6, "several programmes in independent substreams"},
}};

std::string withDetail(const std::string& codec, const std::string& detail) {
  return detail.empty() ? codec : codec + ", " + detail;
}

/** component_type 1 to 16: four formats each in SD at 25 and 30 Hz, then in HD. */
std::string videoDetail(int componentType) {
  if (componentType < 1 || componentType > 16) {
    return {};
  }
  const int index = componentType - 1;
  const std::string rate = (index / 4) % 2 == 0 ? ", 25 Hz" : ", 30 Hz";
  return (index >= 8 ? "HD " : "SD ") + nameIn(kPictureFormats, index % 4) + rate;
}

/** AVC has no pan vectors, and no 4:3 in high definition. */
std::string avcDetail(int componentType) {
  const int format = (componentType - 1) % 4;
  return format == 1 || (format == 0 && componentType > 8) ? "" : videoDetail(componentType);
}

/** The extension of stream_content 9 says what its component_types are. */
std::string extendedComponentName(int extension) {
  switch (extension) {
    case 0:
      return "HEVC video";
    case 1:
      return "next generation audio";
    case 2:
      return "TTML subtitles";
    default:
      return {};
  }
}

}  // namespace

std::string contentName(int nibbles) {
  std::string name = nameIn(kGenres, nibbles);
  if (!name.empty()) {
    return name;
  }
  const int level1 = nibbles >> 4;
  const bool isUserDefined =
      level1 == 0xF || ((nibbles & 0x0F) == 0xF && level1 >= 0x1 && level1 <= 0xB);
  return isUserDefined ? "user defined" : "";
}

std::string subtitlingTypeName(int subtitlingType) {
  return nameIn(kSubtitles, subtitlingType);
}

std::string aacTypeName(int aacType) {
  return nameIn(kAacTypes, aacType);
}

std::string ac3ComponentName(int componentType) {
  return nameIn(kAc3Channels, componentType & 0x07);
}

std::string componentName(int streamContent, int componentType) {
  switch (streamContent & 0x0F) {
    case 1:
      return withDetail("MPEG-2 video", videoDetail(componentType));
    case 2:
      return withDetail("MPEG-1 layer II audio", nameIn(kMpegAudio, componentType));
    case 3:
      return subtitlingTypeName(componentType);
    case 4:
      return withDetail((componentType & 0x80) != 0 ? "enhanced AC-3 audio" : "AC-3 audio",
                        ac3ComponentName(componentType));
    case 5:
      return withDetail("AVC video", avcDetail(componentType));
    case 6:
      return withDetail("HE-AAC audio", aacTypeName(componentType));
    case 7:
      return "DTS audio";
    case 8:
      return "DVB SRM data";
    case 9:
      return extendedComponentName(streamContent >> 4);
    default:
      return {};
  }
}

}  // namespace tevra::tools
