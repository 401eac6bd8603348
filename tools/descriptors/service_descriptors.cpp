// Descriptors of networks, bouquets and services: EN 300 468, 6.2; TS 102 323, 12.

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_syntax.h"
#include "tools/descriptors/name_table.h"

namespace tevra::tools {
namespace {

/** EN 300 468, 6.2.19: linkage_type. */
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

/** EN 300 468, 6.2.19: hand-over_type. */
constexpr std::array<NamedCode, 3> kHandOverTypes = {{
    {1, "identical service in a neighbouring country"},
    {2, "local variation of the same service"},
    {3, "associated service"},
}};

/** ETSI TS 101 162: private_data_specifier. */
constexpr std::array<NamedCode, 2> kPrivateDataSpecifiers = {{
    {0x28, "EACEM"},
    {0x29, "NorDig"},
}};

constexpr int kMobileHandOver = 0x08;
constexpr int kEventLinkage = 0x0D;

void name(FieldReader& in) {
  in.text("name", in.left());
}

void multilingualName(FieldReader& in) {
  in.list("names", [&in] {
    in.letters("language");
    in.countedText("name");
  });
}

void serviceList(FieldReader& in) {
  in.list("services", [&in] {
    in.id("serviceId", 16);
    in.code("serviceType", 8, &serviceTypeName);
  });
}

void stuffing(FieldReader& in) {
  in.rest("stuffing");
}

void service(FieldReader& in) {
  in.code("serviceType", 8, &serviceTypeName);
  in.countedText("providerName");
  in.countedText("serviceName");
}

void multilingualServiceName(FieldReader& in) {
  in.list("names", [&in] {
    in.letters("language");
    in.countedText("providerName");
    in.countedText("serviceName");
  });
}

void countryAvailability(FieldReader& in) {
  in.word("available", "available in", "not available in");
  in.skip(7);
  in.list("countries", [&in] { in.letters("country"); });
}

void mobileHandOver(FieldReader& in) {
  const int type = in.choice("handOverType", 4, &nameOf<kHandOverTypes>);
  in.skip(3);
  const bool isFromSdt = in.bits(1) != 0;
  in.keep(wordField("originIsSdt", isFromSdt, "from an SDT", "from a NIT"));
  if (type >= 1 && type <= 3) {
    in.id("networkId", 16);
  }
  if (!isFromSdt) {
    in.id("initialServiceId", 16);
  }
}

void eventLinkage(FieldReader& in) {
  in.id("targetEventId", 16);
  in.flag("targetListed");
  in.flag("eventSimulcast");
  in.skip(6);
}

void linkage(FieldReader& in) {
  in.id("transportStreamId", 16);
  in.id("originalNetworkId", 16);
  in.id("serviceId", 16);
  const int64_t type = in.code("linkageType", 8, &nameOf<kLinkageTypes>);
  if (type == kMobileHandOver) {
    mobileHandOver(in);
  } else if (type == kEventLinkage) {
    eventLinkage(in);
  }
  in.rest("privateData");
}

void nvodReference(FieldReader& in) {
  in.list("references", [&in] {
    in.id("transportStreamId", 16);
    in.id("originalNetworkId", 16);
    in.id("serviceId", 16);
  });
}

void timeShiftedService(FieldReader& in) {
  in.id("referenceServiceId", 16);
}

void caIdentifier(FieldReader& in) {
  in.list("caSystems", [&in] { in.code("caSystemId", 16); });
}

void privateDataSpecifier(FieldReader& in) {
  in.code("specifier", 32, &nameOf<kPrivateDataSpecifiers>);
}

void serviceIdentifier(FieldReader& in) {
  in.text("identifier", in.left());
}

void defaultAuthority(FieldReader& in) {
  in.text("authority", in.left());
}

}  // namespace

DescriptorSyntax serviceSyntax(int tag) {
  static constexpr std::array<TaggedSyntax, 16> kSyntaxes = {{
      {0x40, &name},
      {0x41, &serviceList},
      {0x42, &stuffing},
      {0x47, &name},
      {0x48, &service},
      {0x49, &countryAvailability},
      {0x4A, &linkage},
      {0x4B, &nvodReference},
      {0x4C, &timeShiftedService},
      {0x53, &caIdentifier},
      {0x5B, &multilingualName},
      {0x5C, &multilingualName},
      {0x5D, &multilingualServiceName},
      {0x5F, &privateDataSpecifier},
      {0x71, &serviceIdentifier},
      {0x73, &defaultAuthority},
  }};
  return syntaxIn(kSyntaxes, tag);
}

}  // namespace tevra::tools
