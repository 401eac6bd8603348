#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "synth/psi_synthesis.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/transport_packets.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;

constexpr size_t kLongestName = 244;

/** The name in the output's service descriptor, for whatever the platform makes of the UTF-8. */
class ServiceName : public fake::PlatformTest {
 protected:
  /** The platform converts every name to `dvb`. */
  static void convertTo(bool result, const std::string& dvb) {
    fake::platform().textFromUTF8 = [=](const std::string&, std::string& out) {
      out = dvb;
      return result;
    };
  }

  /** Synthesises and returns the name, checked against lengths and provider on its way. */
  std::string synthesised() {
    StoredTables stored;
    EXPECT_EQ(synthSDT(work_, stored), 0);
    const SDT decoded = decodeSdt(work_.outputTables.sdtPackets);
    EXPECT_EQ(decoded, work_.outputTables.dvbTables.sdt);
    const std::string payload = decoded.services.at(0).descriptors.at(0).data;
    EXPECT_EQ(payload.substr(0, 10), "\x19\x08TEVRA SA");
    EXPECT_EQ(byteAt(payload, 10), static_cast<int>(payload.size() - 11));
    return payload.substr(11);
  }

  /** What remains of a name that the platform converts to `dvb`. */
  std::string of(const std::string& dvb) {
    convertTo(true, dvb);
    return synthesised();
  }

  ServiceTables service_ = makeServiceTables();
  ServiceWorkRecord work_ = makeWorkRecord(service_);
};

TEST_F(ServiceName, IsWhatThePlatformMakesOfTheUtf8) {
  std::string asked;
  fake::platform().textFromUTF8 = [&](const std::string& utf8, std::string& dvb) {
    asked = utf8;
    dvb = "\x05uno";
    return true;
  };
  EXPECT_EQ(synthesised(), "\x05uno");
  EXPECT_EQ(asked, "Uno HD");
  EXPECT_TRUE(fake::logLines(4).empty());
}

TEST_F(ServiceName, ThatCannotBeConvertedIsNonameAndTheServiceId) {
  convertTo(false, "half a name");
  EXPECT_EQ(synthesised(), "Noname1201");
  EXPECT_THAT(fake::logLines(4),
              ElementsAre(LogLine{4, "", "[synthSDT] Service name cannot be encoded."}));
}

TEST_F(ServiceName, NonameHasTheServiceIdAsItStands) {
  convertTo(false, "");
  work_.identity.outputSID = 0;
  EXPECT_EQ(synthesised(), "Noname0");
  work_.identity.outputSID = -1;
  EXPECT_EQ(synthesised(), "Noname-1");
  work_.identity.outputSID = 2147483647;
  EXPECT_EQ(synthesised(), "Noname2147483647");
}

TEST_F(ServiceName, MayBeEmpty) {
  EXPECT_EQ(of(""), "");
  EXPECT_TRUE(fake::logLines(4).empty());
}

TEST_F(ServiceName, EndsAtItsFirstZeroByte) {
  EXPECT_EQ(of(std::string("Uno\0HD", 6)), "Uno");
  EXPECT_EQ(of(std::string("\0Uno", 4)), "");
  // Also inside a selector: the three bytes of an ISO/IEC 8859 table's.
  EXPECT_EQ(of(std::string("\x10\x00\x02Uno", 6)), "\x10");
}

TEST_F(ServiceName, OfTheLongestSizeIsNotCut) {
  const std::string longest(kLongestName, 'x');
  EXPECT_EQ(of(longest), longest);
}

TEST_F(ServiceName, OneByteTooLongIsCut) {
  EXPECT_EQ(of(std::string(kLongestName + 1, 'x')), std::string(kLongestName, 'x'));
  EXPECT_EQ(of(std::string(100000, 'x')), std::string(kLongestName, 'x'));
}

// Where each kind of text is cut: tests/synth/dvb_name_test.cpp.

TEST_F(ServiceName, IsCutBeforeADiacriticWhoseLetterDoesNotFit) {
  const std::string fits = std::string(kLongestName - 2, 'x') +
                           "\xC2"
                           "e";
  EXPECT_EQ(of(fits + "yz"), fits);
  EXPECT_EQ(of(std::string(kLongestName - 1, 'x') + "\xC2"
                                                    "eyz"),
            std::string(kLongestName - 1, 'x'));
}

TEST_F(ServiceName, TheServiceTypeIsLookedUpBeforeTheNameIsConverted) {
  convertTo(false, "");
  service_.sdt = SDT();
  StoredTables stored;
  synthSDT(work_, stored);
  EXPECT_THAT(fake::logLines(4),
              ElementsAre(LogLine{4, "", "Service not found in STD!!"},
                          LogLine{4, "", "[synthSDT] Service name cannot be encoded."}));
}

}  // namespace
}  // namespace tevra::test
