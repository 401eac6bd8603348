// Delivery systems: EN 300 468, 6.2.13, 6.2.17 and 6.4.

#include "tools/descriptors/descriptor_syntax.h"
#include "tools/descriptors/name_table.h"
#include "tools/text/decimals.h"

namespace tevra::tools {
namespace {

constexpr std::array<NamedCode, 4> kPolarizations = {{
    {0, "horizontal"},
    {1, "vertical"},
    {2, "left circular"},
    {3, "right circular"},
}};
constexpr std::array<NamedCode, 3> kRollOffs = {{{0, "0.35"}, {1, "0.25"}, {2, "0.20"}}};
constexpr std::array<NamedCode, 4> kSatelliteModulations = {{
    {0, "auto"},
    {1, "QPSK"},
    {2, "8PSK"},
    {3, "16-QAM"},
}};
constexpr std::array<NamedCode, 11> kInnerFecs = {{
    {1, "1/2"},
    {2, "2/3"},
    {3, "3/4"},
    {4, "5/6"},
    {5, "7/8"},
    {6, "8/9"},
    {7, "3/5"},
    {8, "4/5"},
    {9, "9/10"},
    {15, "none"},
    {0, "undefined"},
}};
constexpr std::array<NamedCode, 3> kOuterFecs = {{
    {0, "undefined"},
    {1, "none"},
    {2, "RS(204/188)"},
}};
constexpr std::array<NamedCode, 6> kCableModulations = {{
    {0, "undefined"},
    {1, "16-QAM"},
    {2, "32-QAM"},
    {3, "64-QAM"},
    {4, "128-QAM"},
    {5, "256-QAM"},
}};
constexpr std::array<NamedCode, 4> kBandwidths = {{
    {0, "8 MHz"},
    {1, "7 MHz"},
    {2, "6 MHz"},
    {3, "5 MHz"},
}};
constexpr std::array<NamedCode, 3> kConstellations = {{{0, "QPSK"}, {1, "16-QAM"}, {2, "64-QAM"}}};
constexpr std::array<NamedCode, 8> kHierarchies = {{
    {0, "none, native interleaver"},
    {1, "alpha 1, native interleaver"},
    {2, "alpha 2, native interleaver"},
    {3, "alpha 4, native interleaver"},
    {4, "none, in-depth interleaver"},
    {5, "alpha 1, in-depth interleaver"},
    {6, "alpha 2, in-depth interleaver"},
    {7, "alpha 4, in-depth interleaver"},
}};
constexpr std::array<NamedCode, 5> kCodeRates = {{
    {0, "1/2"},
    {1, "2/3"},
    {2, "3/4"},
    {3, "5/6"},
    {4, "7/8"},
}};
constexpr std::array<NamedCode, 4> kGuardIntervals = {{
    {0, "1/32"},
    {1, "1/16"},
    {2, "1/8"},
    {3, "1/4"},
}};
constexpr std::array<NamedCode, 3> kTransmissionModes = {{{0, "2k"}, {1, "8k"}, {2, "4k"}}};
constexpr std::array<NamedCode, 4> kCodingTypes = {{
    {0, "undefined"},
    {1, "satellite"},
    {2, "cable"},
    {3, "terrestrial"},
}};
constexpr std::array<NamedCode, 4> kTsGsModes = {{
    {0, "generic packetised"},
    {1, "GSE"},
    {2, "GSE high efficiency mode"},
    {3, "transport stream"},
}};

void satelliteFrequency(FieldReader& in) {
  in.decimalDigits("frequency", 8, 10'000,
                   [](int64_t hertz) { return scaledText(hertz, 9, "GHz"); });
}

void cableFrequency(FieldReader& in) {
  in.decimalDigits("frequency", 8, 100, [](int64_t hertz) { return scaledText(hertz, 6, "MHz"); });
}

void terrestrialFrequency(FieldReader& in) {
  const auto hertz = static_cast<int64_t>(in.bits(32)) * 10;
  in.keep({"frequency", Number{hertz, scaledText(hertz, 6, "MHz"), {}}});
}

void symbolRate(FieldReader& in) {
  in.decimalDigits("symbolRate", 7, 100,
                   [](int64_t rate) { return scaledText(rate, 6, "Msymbol/s"); });
}

void satellite(FieldReader& in) {
  satelliteFrequency(in);
  in.decimalDigits("orbitalPosition", 4, 1,
                   [](int64_t tenths) { return scaledText(tenths, 1, "degrees"); });
  in.word("east", "east", "west");
  in.choice("polarization", 2, &nameOf<kPolarizations>);
  const auto rollOff = static_cast<int>(in.bits(2));
  const bool isS2 = in.bits(1) != 0;
  in.keep(wordField("dvbS2", isS2, "DVB-S2", "DVB-S"));
  if (isS2) {
    in.keep(decimalField("rollOff", rollOff, nameOf<kRollOffs>(rollOff)));
  }
  in.choice("modulation", 2, &nameOf<kSatelliteModulations>);
  symbolRate(in);
  in.choice("innerFec", 4, &nameOf<kInnerFecs>);
}

void cable(FieldReader& in) {
  cableFrequency(in);
  in.skip(12);
  in.choice("outerFec", 4, &nameOf<kOuterFecs>);
  in.choice("modulation", 8, &nameOf<kCableModulations>);
  symbolRate(in);
  in.choice("innerFec", 4, &nameOf<kInnerFecs>);
}

void terrestrial(FieldReader& in) {
  terrestrialFrequency(in);
  in.choice("bandwidth", 3, &nameOf<kBandwidths>);
  in.word("highPriority", "high priority or non-hierarchical", "low priority");
  in.word("noTimeSlicing", "no time slicing", "time slicing");
  in.word("noMpeFec", "no MPE-FEC", "MPE-FEC");
  in.skip(2);
  in.choice("constellation", 2, &nameOf<kConstellations>);
  in.choice("hierarchy", 3, &nameOf<kHierarchies>);
  in.choice("hpCodeRate", 3, &nameOf<kCodeRates>);
  in.choice("lpCodeRate", 3, &nameOf<kCodeRates>);
  in.choice("guardInterval", 2, &nameOf<kGuardIntervals>);
  in.choice("transmissionMode", 2, &nameOf<kTransmissionModes>);
  in.flag("otherFrequencies");
  in.skip(32);
}

void frequencyList(FieldReader& in) {
  in.skip(6);
  const int coding = in.choice("codingType", 2, &nameOf<kCodingTypes>);
  in.list("frequencies", [&in, coding] {
    if (coding == 1) {
      satelliteFrequency(in);
    } else if (coding == 2) {
      cableFrequency(in);
    } else if (coding == 3) {
      terrestrialFrequency(in);
    } else {
      in.code("frequency", 32);
    }
  });
}

void s2Satellite(FieldReader& in) {
  const bool hasScrambling = in.flag("scramblingSequenceSelector");
  const bool hasStreamId = in.flag("multipleInputStreams");
  in.flag("backwardsCompatible");
  const bool hasNoTimeSlice = in.flag("notTimeSliced");
  in.skip(2);
  in.choice("tsGsMode", 2, &nameOf<kTsGsModes>);
  if (hasScrambling) {
    in.skip(6);
    in.number("scramblingSequenceIndex", 18);
  }
  if (hasStreamId) {
    in.number("inputStreamId", 8);
  }
  if (!hasNoTimeSlice) {
    in.number("timesliceNumber", 8);
  }
}

}  // namespace

DescriptorSyntax deliverySyntax(int tag) {
  static constexpr std::array<TaggedSyntax, 5> kSyntaxes = {{
      {0x43, &satellite},
      {0x44, &cable},
      {0x5A, &terrestrial},
      {0x62, &frequencyList},
      {0x79, &s2Satellite},
  }};
  return syntaxIn(kSyntaxes, tag);
}

}  // namespace tevra::tools
