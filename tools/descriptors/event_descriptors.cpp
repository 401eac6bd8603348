// Descriptors of events and times: EN 300 468, 6.2; TS 102 323, 12.1.

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_syntax.h"
#include "tools/descriptors/name_table.h"
#include "tools/text/dvb_time.h"

namespace tevra::tools {
namespace {

constexpr std::array<NamedCode, 4> kCridTypes = {{
    {0x00, "undefined"},
    {0x01, "programme"},
    {0x02, "series"},
    {0x03, "recommendation"},
}};

constexpr int kFirstPrivateCridType = 0x20;
constexpr int kYoungestRating = 0x01;
constexpr int kOldestRating = 0x0F;

/** ETSI TS 102 323, 12.1: crid_type. */
std::string cridTypeName(int cridType) {
  return cridType >= kFirstPrivateCridType ? "user private" : nameIn(kCridTypes, cridType);
}

/** EN 300 468, 6.2.28: the minimum age that a rating stands for. */
std::string parentalRatingName(int rating) {
  if (rating == 0) {
    return "undefined";
  }
  const bool isAge = rating >= kYoungestRating && rating <= kOldestRating;
  return isAge ? "from age " + std::to_string(rating + 3) : "defined by the broadcaster";
}

void shortEvent(FieldReader& in) {
  in.letters("language");
  in.countedText("eventName");
  in.countedText("text");
}

void extendedEvent(FieldReader& in) {
  in.number("descriptorNumber", 4);
  in.number("lastDescriptorNumber", 4);
  in.letters("language");
  in.listWithin("items", static_cast<size_t>(in.bits(8)), [&in] {
    in.countedText("itemDescription");
    in.countedText("item");
  });
  in.countedText("text");
}

void timeShiftedEvent(FieldReader& in) {
  in.id("referenceServiceId", 16);
  in.id("referenceEventId", 16);
}

void component(FieldReader& in) {
  const auto extension = static_cast<int>(in.bits(4));
  const auto content = static_cast<int>(in.bits(4));
  const auto type = static_cast<int>(in.bits(8));
  // Up to 8 the extension is reserved, and its value says nothing.
  static constexpr int kFirstExtended = 9;
  if (content >= kFirstExtended) {
    in.keep(codeField("streamContentExtension", extension));
  }
  in.keep(codeField("streamContent", content));
  const int whole = content >= kFirstExtended ? (extension << 4) | content : content;
  in.keep(codeField("componentType", type, componentName(whole, type)));
  in.code("componentTag", 8);
  in.letters("language");
  if (in.left() > 0) {
    in.text("text", in.left());
  }
}

void content(FieldReader& in) {
  in.list("contents", [&in] {
    in.code("content", 8, &contentName);
    in.code("userByte", 8);
  });
}

void parentalRating(FieldReader& in) {
  in.list("ratings", [&in] {
    in.letters("country");
    in.code("rating", 8, &parentalRatingName);
  });
}

/** A local time offset: four digits hhmm. */
void offset(FieldReader& in, const std::string& name, bool isNegative) {
  const auto digits = static_cast<int64_t>(in.bits(16));
  in.keep(plainField(name, (isNegative ? "-" : "+") + codedDigits(digits, 2)));
}

void localTimeOffset(FieldReader& in) {
  in.list("offsets", [&in] {
    in.letters("country");
    in.number("region", 6);
    in.skip(1);
    const bool isNegative = in.bits(1) != 0;
    offset(in, "offset", isNegative);
    in.keep(plainField("timeOfChange", utcTimeText(static_cast<int64_t>(in.bits(40)))));
    offset(in, "nextOffset", isNegative);
  });
}

void programmeIdentification(FieldReader& in) {
  in.skip(4);
  in.number("day", 5);
  in.number("month", 4);
  in.number("hour", 5);
  in.number("minute", 6);
}

void contentIdentifier(FieldReader& in) {
  in.list("crids", [&in] {
    in.code("cridType", 6, &cridTypeName);
    const auto location = in.bits(2);
    if (location == 0) {
      in.countedText("crid");
    } else if (location == 1) {
      in.id("cridReference", 16);
    } else {
      in.fail("has a CRID in a place that is not defined");
    }
  });
}

void ftaContentManagement(FieldReader& in) {
  in.flag("userDefined");
  in.skip(3);
  in.flag("doNotScramble");
  in.number("controlRemoteAccess", 2);
  in.flag("doNotApplyRevocation");
}

}  // namespace

DescriptorSyntax eventSyntax(int tag) {
  static constexpr std::array<TaggedSyntax, 10> kSyntaxes = {{
      {0x4D, &shortEvent},
      {0x4E, &extendedEvent},
      {0x4F, &timeShiftedEvent},
      {0x50, &component},
      {0x54, &content},
      {0x55, &parentalRating},
      {0x58, &localTimeOffset},
      {0x69, &programmeIdentification},
      {0x76, &contentIdentifier},
      {0x7E, &ftaContentManagement},
  }};
  return syntaxIn(kSyntaxes, tag);
}

}  // namespace tevra::tools
