// Descriptors with user defined tags whose owner the loop names.

#include "tools/descriptors/descriptor_syntax.h"
#include "tools/descriptors/name_table.h"

namespace tevra::tools {
namespace {

constexpr uint32_t kEacem = 0x28;
constexpr uint32_t kNordig = 0x29;
/** Registered format_identifiers: "GA94" (ATSC A/65), "AC-3" (ATSC A/52), "CUEI" (SCTE 35). */
constexpr uint32_t kAtsc = 0x47413934;
constexpr uint32_t kAc3 = 0x41432D33;
constexpr uint32_t kCuei = 0x43554549;

constexpr std::array<NamedCode, 5> kCueStreamTypes = {{
    {0, "splice insert, null and schedule"},
    {1, "all commands"},
    {2, "segmentation"},
    {3, "tiered splicing"},
    {4, "tiered segmentation"},
}};

void channels(FieldReader& in, int reservedBits, int numberBits) {
  in.list("channels", [&in, reservedBits, numberBits] {
    in.id("serviceId", 16);
    in.word("visible", "visible", "hidden");
    in.skip(reservedBits);
    in.number("channelNumber", numberBits);
  });
}

void eacemChannels(FieldReader& in) {
  channels(in, 5, 10);
}

/** Some networks leave the specifier out. */
void ownerlessChannels(FieldReader& in) {
  in.keep(plainField("assumedOwner", "EACEM"));
  eacemChannels(in);
}

void nordigChannels(FieldReader& in) {
  channels(in, 1, 14);
}

void atscAc3(FieldReader& in) {
  in.number("sampleRateCode", 3);
  in.number("bsid", 5);
  in.number("bitRateCode", 6);
  in.number("surroundMode", 2);
  in.number("bsmod", 3);
  in.number("channelCode", 4);
  in.flag("fullService");
  in.rest("additionalInfo");
}

void captionService(FieldReader& in) {
  in.skip(3);
  in.number("count", 5);
  in.list("services", [&in] {
    in.letters("language");
    const bool isDigital = in.flag("digital");
    in.skip(1);
    if (isDigital) {
      in.number("captionService", 6);
    } else {
      in.skip(5);
      in.flag("line21Field");
    }
    in.flag("easyReader");
    in.flag("wideAspectRatio");
    in.skip(14);
  });
}

void cue(FieldReader& in) {
  in.choice("cueStreamType", 8, &nameOf<kCueStreamTypes>);
}

std::optional<PrivateDescriptor> channelSyntax(std::optional<uint32_t> specifier) {
  static constexpr const char* kName = "logical_channel_descriptor";
  if (!specifier) {
    return PrivateDescriptor{kName, &ownerlessChannels};
  }
  switch (*specifier) {
    case kEacem:
      return PrivateDescriptor{kName, &eacemChannels};
    case kNordig:
      return PrivateDescriptor{kName, &nordigChannels};
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<PrivateDescriptor> privateSyntax(int tag, const PrivateScope& scope) {
  const auto isRegistered = [&scope](uint32_t format) {
    return scope.registrations.count(format) != 0;
  };
  if (tag == 0x83) {
    return channelSyntax(scope.specifier);
  }
  if (tag == 0x81 && (isRegistered(kAtsc) || isRegistered(kAc3))) {
    return PrivateDescriptor{"AC-3_audio_stream_descriptor", &atscAc3};
  }
  if (tag == 0x86 && isRegistered(kAtsc)) {
    return PrivateDescriptor{"caption_service_descriptor", &captionService};
  }
  if (tag == 0x8A && isRegistered(kCuei)) {
    return PrivateDescriptor{"cue_identifier_descriptor", &cue};
  }
  return std::nullopt;
}

}  // namespace tevra::tools
