// Descriptors of ISO/IEC 13818-1, 2.6, and of ISO/IEC 13818-6 as ETSI TR 101 202 uses them.

#include "tools/descriptors/descriptor_syntax.h"
#include "tools/descriptors/name_table.h"

namespace tevra::tools {
namespace {

constexpr std::array<NamedCode, 8> kFrameRates = {{
    {1, "23.976 Hz"},
    {2, "24 Hz"},
    {3, "25 Hz"},
    {4, "29.97 Hz"},
    {5, "30 Hz"},
    {6, "50 Hz"},
    {7, "59.94 Hz"},
    {8, "60 Hz"},
}};
constexpr std::array<NamedCode, 3> kChromaFormats = {{{1, "4:2:0"}, {2, "4:2:2"}, {3, "4:4:4"}}};
constexpr std::array<NamedCode, 4> kAlignments = {{
    {1, "slice or video access unit"},
    {2, "video access unit"},
    {3, "GOP or sequence"},
    {4, "sequence"},
}};
constexpr std::array<NamedCode, 3> kAspectRatios = {
    {{1, "square pixels"}, {2, "4:3"}, {3, "16:9"}}};
/** ISO/IEC 13818-1, 2.6.19. */
constexpr std::array<NamedCode, 4> kAudioTypes = {{
    {0x00, "undefined"},
    {0x01, "clean effects"},
    {0x02, "hearing impaired"},
    {0x03, "visual impaired commentary"},
}};
/** ISO/IEC 13818-1, table 2-50: hierarchy_type. */
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
/** ISO/IEC 13818-1, 2.6.27 and 2.6.31: rates come in units of 50 bytes per second. */
constexpr int64_t kBitsPerRateUnit = 400;

/** A 22-bit rate in units of 400 bit/s. */
void rate(FieldReader& in, const std::string& name) {
  const auto bitsPerSecond = static_cast<int64_t>(in.bits(22)) * kBitsPerRateUnit;
  in.keep({name, Number{bitsPerSecond, std::to_string(bitsPerSecond) + " bit/s", {}}});
}

void videoStream(FieldReader& in) {
  in.flag("multipleFrameRate");
  in.choice("frameRateCode", 4, &nameOf<kFrameRates>);
  const bool isMpeg1 = in.bits(1) != 0;
  in.keep(wordField("mpeg1Only", isMpeg1, "MPEG-1 only", "not only MPEG-1"));
  in.flag("constrainedParameter");
  in.flag("stillPicture");
  if (!isMpeg1) {
    in.code("profileAndLevel", 8);
    in.choice("chromaFormat", 2, &nameOf<kChromaFormats>);
    in.flag("frameRateExtension");
    in.skip(5);
  }
}

void audioStream(FieldReader& in) {
  in.flag("freeFormat");
  in.number("id", 1);
  in.number("layer", 2);
  in.flag("variableRate");
  in.skip(3);
}

void hierarchy(FieldReader& in) {
  in.skip(4);  // which kinds of scalability there are not: reserved at first
  in.choice("hierarchyType", 4, &nameOf<kHierarchyTypes>);
  in.skip(2);
  in.number("layerIndex", 6);
  in.skip(2);
  in.number("embeddedLayerIndex", 6);
  in.skip(2);
  in.number("channel", 6);
}

void registration(FieldReader& in) {
  in.fourCharacters("formatIdentifier");
  in.rest("additionalInfo");
}

void dataStreamAlignment(FieldReader& in) {
  in.choice("alignmentType", 8, &nameOf<kAlignments>);
}

void targetBackgroundGrid(FieldReader& in) {
  in.number("horizontalSize", 14);
  in.number("verticalSize", 14);
  in.choice("aspectRatio", 4, &nameOf<kAspectRatios>);
}

void videoWindow(FieldReader& in) {
  in.number("horizontalOffset", 14);
  in.number("verticalOffset", 14);
  in.number("windowPriority", 4);
}

void conditionalAccess(FieldReader& in) {
  in.code("caSystemId", 16);
  in.skip(3);
  in.id("caPid", 13);
  in.rest("privateData");
}

void language(FieldReader& in) {
  in.list("languages", [&in] {
    in.letters("language");
    in.choice("audioType", 8, &nameOf<kAudioTypes>);
  });
}

void systemClock(FieldReader& in) {
  in.flag("externalClock");
  in.skip(1);
  in.number("accuracyInteger", 6);
  in.number("accuracyExponent", 3);
  in.skip(5);
}

void multiplexBufferUtilization(FieldReader& in) {
  in.flag("boundValid");
  in.number("ltwOffsetLowerBound", 15);
  in.skip(1);
  in.number("ltwOffsetUpperBound", 15);
}

void copyright(FieldReader& in) {
  in.fourCharacters("copyrightIdentifier");
  in.rest("additionalInfo");
}

void maximumBitrate(FieldReader& in) {
  in.skip(2);
  rate(in, "maximumBitrate");
}

void privateDataIndicator(FieldReader& in) {
  in.fourCharacters("privateDataIndicator");
}

void smoothingBuffer(FieldReader& in) {
  in.skip(2);
  rate(in, "leakRate");
  in.skip(2);
  in.number("bufferBytes", 22);
}

void systemTargetDecoder(FieldReader& in) {
  in.skip(7);
  in.flag("leakValid");
}

void ibp(FieldReader& in) {
  in.flag("closedGop");
  in.flag("identicalGop");
  in.number("maxGopLength", 14);
}

void carouselIdentifier(FieldReader& in) {
  in.number("carouselId", 32);
  in.code("formatId", 8);
  in.rest("privateData");
}

void associationTag(FieldReader& in) {
  in.code("associationTag", 16);
  in.code("use", 16);
  in.bytes("selector", static_cast<size_t>(in.bits(8)));
  in.rest("privateData");
}

void profileAndLevel(FieldReader& in) {
  in.code("profileAndLevel", 8);
}

void avcVideo(FieldReader& in) {
  in.number("profile", 8);
  in.code("constraints", 8);
  in.number("level", 8);
  in.flag("stillPictures");
  in.flag("24HourPictures");
  in.flag("framePackingSeiNotPresent");
  in.skip(5);
}

void hevcVideo(FieldReader& in) {
  in.number("profileSpace", 2);
  in.word("tier", "high tier", "main tier");
  in.number("profile", 5);
  in.code("profileCompatibility", 32);
  in.flag("progressiveSource");
  in.flag("interlacedSource");
  in.flag("nonPacked");
  in.flag("frameOnly");
  in.skip(44);
  in.number("level", 8);
  const bool hasTemporalLayers = in.flag("temporalLayerSubset");
  in.flag("stillPictures");
  in.flag("24HourPictures");
  in.skip(5);
  if (hasTemporalLayers) {
    in.number("temporalIdMin", 3);
    in.skip(5);
    in.number("temporalIdMax", 3);
    in.skip(5);
  }
}

constexpr std::array<TaggedSyntax, 23> kSyntaxes = {{
    {0x02, &videoStream},
    {0x03, &audioStream},
    {0x04, &hierarchy},
    {0x05, &registration},
    {0x06, &dataStreamAlignment},
    {0x07, &targetBackgroundGrid},
    {0x08, &videoWindow},
    {0x09, &conditionalAccess},
    {0x0A, &language},
    {0x0B, &systemClock},
    {0x0C, &multiplexBufferUtilization},
    {0x0D, &copyright},
    {0x0E, &maximumBitrate},
    {0x0F, &privateDataIndicator},
    {0x10, &smoothingBuffer},
    {0x11, &systemTargetDecoder},
    {0x12, &ibp},
    {0x13, &carouselIdentifier},
    {0x14, &associationTag},
    {0x1B, &profileAndLevel},
    {0x1C, &profileAndLevel},
    {0x28, &avcVideo},
    {0x38, &hevcVideo},
}};

}  // namespace

DescriptorSyntax mpegSyntax(int tag) {
  return syntaxIn(kSyntaxes, tag);
}

}  // namespace tevra::tools
