// Descriptors of elementary streams: EN 300 468, 6.2 and annexes D and H; TS 102 809, 5.3.5.1.

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_names.h"
#include "tools/descriptors/descriptor_syntax.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int kMonochromeSamples = 7;
constexpr int kSupplementaryAudio = 0x06;

bool hasLines(int64_t vbiService) {
  return vbiService >= 1 && vbiService <= kMonochromeSamples && vbiService != 3;
}

void vbiData(FieldReader& in) {
  in.list("services", [&in] {
    const int64_t service = in.code("dataServiceId", 8, &vbiServiceName);
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
    in.code("teletextType", 5, &teletextTypeName);
    const auto magazine = static_cast<int>(in.bits(3));
    const auto page = static_cast<int>(in.bits(8));
    // Magazine 8 is coded as 0; the page's BCD digits print as hexadecimal ones.
    const int number = ((magazine == 0 ? 8 : magazine) << 8) | page;
    in.keep({"page", Text{hex(number, 3).substr(2), /*quoted=*/false}});
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
  in.code("dataBroadcastId", 16, &dataBroadcastName);
  in.code("componentTag", 8);
  in.bytes("selector", static_cast<size_t>(in.bits(8)));
  in.letters("language");
  in.countedText("text");
}

void dataBroadcastId(FieldReader& in) {
  in.code("dataBroadcastId", 16, &dataBroadcastName);
  in.rest("selector");
}

void optionalCode(FieldReader& in, bool isThere, const std::string& name, NameOf nameOf = nullptr) {
  if (isThere) {
    in.code(name, 8, nameOf);
  }
}

void ac3(FieldReader& in) {
  const bool hasType = in.bits(1) != 0;
  const bool hasBsid = in.bits(1) != 0;
  const bool hasMainId = in.bits(1) != 0;
  const bool hasAssociated = in.bits(1) != 0;
  in.skip(4);
  optionalCode(in, hasType, "componentType", &ac3ComponentName);
  optionalCode(in, hasBsid, "bsid");
  optionalCode(in, hasMainId, "mainId");
  optionalCode(in, hasAssociated, "associatedService");
  in.rest("additionalInfo");
}

void enhancedAc3(FieldReader& in) {
  const bool hasType = in.bits(1) != 0;
  const bool hasBsid = in.bits(1) != 0;
  const bool hasMainId = in.bits(1) != 0;
  const bool hasAssociated = in.bits(1) != 0;
  in.flag("mixInfo");
  const bool hasSubstream1 = in.bits(1) != 0;
  const bool hasSubstream2 = in.bits(1) != 0;
  const bool hasSubstream3 = in.bits(1) != 0;
  optionalCode(in, hasType, "componentType", &ac3ComponentName);
  optionalCode(in, hasBsid, "bsid");
  optionalCode(in, hasMainId, "mainId");
  optionalCode(in, hasAssociated, "associatedService");
  optionalCode(in, hasSubstream1, "substream1");
  optionalCode(in, hasSubstream2, "substream2");
  optionalCode(in, hasSubstream3, "substream3");
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
    in.code("applicationType", 15, &applicationTypeName);
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
