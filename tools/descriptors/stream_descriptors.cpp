// Descriptors of elementary streams: EN 300 468, 6.2 and annexes D and H; TS 102 809, 5.3.5.1.

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_names.h"
#include "tools/descriptors/descriptor_syntax.h"
#include "tools/descriptors/name_table.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

/** EN 300 468, 6.2.43: teletext_type. */
constexpr std::array<NamedCode, 5> kTeletextTypes = {{
    {1, "initial page"},
    {2, "subtitle page"},
    {3, "additional information page"},
    {4, "programme schedule page"},
    {5, "subtitle page for the hearing impaired"},
}};

/** EN 300 468, 6.2.47: data_service_id. */
constexpr std::array<NamedCode, 6> kVbiServices = {{
    {1, "EBU teletext"},
    {2, "inverted teletext"},
    {4, "VPS"},
    {5, "WSS"},
    {6, "closed captioning"},
    {7, "monochrome 4:2:2 samples"},
}};

/** ETSI TS 101 162: data_broadcast_id. */
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

/** ETSI TS 102 809, 5.3.5.1: application_type. */
constexpr std::array<NamedCode, 4> kApplicationTypes = {{
    {0x0001, "DVB-J"},
    {0x0002, "DVB-HTML"},
    {0x0008, "MHEG-5"},
    {0x0010, "HbbTV"},
}};

constexpr int kMonochromeSamples = 7;
constexpr int kSupplementaryAudio = 0x06;

bool hasLines(int64_t vbiService) {
  return vbiService >= 1 && vbiService <= kMonochromeSamples && vbiService != 3;
}

void vbiData(FieldReader& in) {
  in.list("services", [&in] {
    const int64_t service = in.code("dataServiceId", 8, &nameOf<kVbiServices>);
    const auto length = static_cast<size_t>(in.bits(8));
    if (!hasLines(service)) {
      in.bytes("reserved", length);
      return;
    }
    in.listWithin("lines", length, [&in] {
      in.skip(2);
      in.word("firstField", "first field", "second field");
      in.number("lineOffset", 5);
    });
  });
}

void teletext(FieldReader& in) {
  in.list("pages", [&in] {
    in.letters("language");
    in.code("teletextType", 5, &nameOf<kTeletextTypes>);
    const auto magazine = static_cast<int>(in.bits(3));
    const auto page = static_cast<int>(in.bits(8));
    // Magazine 8 is coded as 0; the page's BCD digits print as hexadecimal ones.
    const int number = ((magazine == 0 ? 8 : magazine) << 8) | page;
    in.keep(plainField("page", hex(number, 3).substr(2)));
  });
}

void streamIdentifier(FieldReader& in) {
  in.code("componentTag", 8);
}

void subtitling(FieldReader& in) {
  in.list("subtitles", [&in] {
    in.letters("language");
    in.code("subtitlingType", 8, &subtitlingTypeName);
    in.number("compositionPageId", 16);
    in.number("ancillaryPageId", 16);
  });
}

void dataBroadcast(FieldReader& in) {
  in.code("dataBroadcastId", 16, &nameOf<kDataBroadcasts>);
  in.code("componentTag", 8);
  in.bytes("selector", static_cast<size_t>(in.bits(8)));
  in.letters("language");
  in.countedText("text");
}

void dataBroadcastId(FieldReader& in) {
  in.code("dataBroadcastId", 16, &nameOf<kDataBroadcasts>);
  in.rest("selector");
}

void optionalCode(FieldReader& in, bool isThere, const std::string& name, NameOf names = nullptr) {
  if (isThere) {
    in.code(name, 8, names);
  }
}

/** Those that AC-3 and enhanced AC-3 have, as four bits say. */
void ac3Codes(FieldReader& in, uint64_t present) {
  optionalCode(in, (present & 8) != 0, "componentType", &ac3ComponentName);
  optionalCode(in, (present & 4) != 0, "bsid");
  optionalCode(in, (present & 2) != 0, "mainId");
  optionalCode(in, (present & 1) != 0, "associatedService");
}

void ac3(FieldReader& in) {
  const uint64_t present = in.bits(4);
  in.skip(4);
  ac3Codes(in, present);
  in.rest("additionalInfo");
}

void enhancedAc3(FieldReader& in) {
  const uint64_t present = in.bits(4);
  in.flag("mixInfo");
  const uint64_t substreams = in.bits(3);
  ac3Codes(in, present);
  optionalCode(in, (substreams & 4) != 0, "substream1");
  optionalCode(in, (substreams & 2) != 0, "substream2");
  optionalCode(in, (substreams & 1) != 0, "substream3");
  in.rest("additionalInfo");
}

void aac(FieldReader& in) {
  in.code("profileAndLevel", 8);
  if (in.left() == 0) {
    return;
  }
  const bool hasType = in.bits(1) != 0;
  in.flag("saocDe");
  in.skip(6);
  optionalCode(in, hasType, "aacType", &aacTypeName);
  in.rest("additionalInfo");
}

void applicationSignalling(FieldReader& in) {
  in.list("applications", [&in] {
    in.skip(1);
    in.code("applicationType", 15, &nameOf<kApplicationTypes>);
    in.skip(3);
    in.number("aitVersion", 5);
  });
}

void supplementaryAudio(FieldReader& in) {
  in.word("completeMix", "complete programme mix", "supplementary to another stream");
  in.number("editorialClassification", 5);
  in.skip(1);
  if (in.bits(1) != 0) {
    in.letters("language");
  }
  in.rest("privateData");
}

void extension(FieldReader& in) {
  const int64_t tag = in.code("extensionTag", 8, &extensionDescriptorName);
  if (tag == kSupplementaryAudio) {
    supplementaryAudio(in);
  } else {
    in.rest("selector");
  }
}

}  // namespace

DescriptorSyntax streamSyntax(int tag) {
  static constexpr std::array<TaggedSyntax, 12> kSyntaxes = {{
      {0x45, &vbiData},
      {0x46, &teletext},
      {0x52, &streamIdentifier},
      {0x56, &teletext},
      {0x59, &subtitling},
      {0x64, &dataBroadcast},
      {0x66, &dataBroadcastId},
      {0x6A, &ac3},
      {0x6F, &applicationSignalling},
      {0x7A, &enhancedAc3},
      {0x7C, &aac},
      {0x7F, &extension},
  }};
  return syntaxIn(kSyntaxes, tag);
}

}  // namespace tevra::tools
