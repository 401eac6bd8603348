#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/synth/synthesis_fixture.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::SizeIs;

using SynthSdt = SynthesisTest<SDT>;

/** The SDT of the work record as first handed out. */
SDT firstSdt() {
  SDTService service = makeService(1201, {makeDescriptor(0x48, "\x19\x08TEVRA SA\x06Uno HD")});
  service.runningStatus = 4;
  SDT sdt = makeSdt({service});
  sdt.transportStreamId = 7;
  sdt.version = 1;
  sdt.originalNetworkId = 8;
  return sdt;
}

TEST_F(SynthSdt, TheFirstSdtDescribesTheOutputServiceAlone) {
  EXPECT_EQ(synthesise(), 0);
  EXPECT_EQ(output(), firstSdt());
  EXPECT_EQ(stored(), firstSdt());
  EXPECT_EQ(decodeSdt(packets()), firstSdt());
  EXPECT_THAT(fake::logLines(), ElementsAre(saves(), packetsMade(1)));
}

TEST_F(SynthSdt, TheSectionIsExactToTheByte) {
  synthesise();
  ASSERT_THAT(packets(), SizeIs(1));
  const std::string expected = std::string("\x42\xF0\x24\x00\x07\xC3\x00\x00\x00\x08\xFF", 11) +
                               std::string("\x04\xB1\xFC\x80\x13\x48\x11\x19\x08", 9) + "TEVRA SA" +
                               "\x06Uno HD";
  EXPECT_EQ(packets()[0].substr(0, 5), std::string("\x47\x40\x11\x10\x00", 5));
  EXPECT_EQ(section().substr(0, section().size() - 4), expected);
}

TEST_F(SynthSdt, EveryPartOfTheOutputsIdentityMovesTheVersion) {
  synthesise();
  input_.identity.serviceName = "Dos";
  synthesise();
  EXPECT_EQ(output().version, 2);
  input_.identity.transportStreamId = 17;
  synthesise();
  EXPECT_EQ(output().version, 3);
  input_.identity.originalNetworkId = 18;
  synthesise();
  EXPECT_EQ(output().version, 4);
  input_.identity.outputSID = 1202;
  synthesise();
  EXPECT_EQ(output().version, 5);
  service_.sdt.services[0].descriptors[0] = makeServiceDescriptor(0x02);
  synthesise();
  EXPECT_EQ(output().version, 6);
  EXPECT_THAT(fake::logLines(), ElementsAre(saves(), packetsMade(1)));
  EXPECT_EQ(stored(), output());
  EXPECT_EQ(decodeSdt(packets()), output());
}

TEST_F(SynthSdt, NothingElseOfTheInputMovesTheVersion) {
  synthesise();
  SDTService& service = service_.sdt.services[0];
  service.runningStatus = 1;
  service.eitSchedule = true;
  service.eitPresentFollowing = true;
  service.freeCA = true;
  service.descriptors.push_back(makeDescriptor(0x49, "ES"));
  service_.sdt.services.push_back(makeService(9, {makeServiceDescriptor(1)}));
  service_.sdt.tableId = 0x46;
  service_.sdt.transportStreamId = 4711;
  synthesise();
  EXPECT_EQ(output(), firstSdt());
}

TEST_F(SynthSdt, AnUnknownServiceIsDescribedWithTypeZero) {
  service_.sdt = SDT();
  EXPECT_EQ(synthesise(), 0);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{4, "", "Service not found in STD!!"}, saves(), packetsMade(1)));
  EXPECT_EQ(byteAt(output().services.at(0).descriptors.at(0).data, 0), 0);
}

TEST_F(SynthSdt, TheTypeIsThatOfTheInputServiceNotOfTheOutputs) {
  service_.sdt = makeSdt({makeService(1201, {makeServiceDescriptor(0x02)}),
                          makeService(kInputProgram, {makeServiceDescriptor(0x16)})});
  synthesise();
  EXPECT_EQ(byteAt(output().services.at(0).descriptors.at(0).data, 0), 0x16);
}

TEST_F(SynthSdt, ValuesTooWideForASectionAreNarrowedOnceAndForAll) {
  input_.identity.transportStreamId = 0x12345;
  input_.identity.originalNetworkId = -1;
  input_.identity.outputSID = 0x1F001;
  synthesise();
  EXPECT_EQ(output().transportStreamId, 0x2345);
  EXPECT_EQ(output().originalNetworkId, 0xFFFF);
  EXPECT_EQ(output().services.at(0).serviceId, 0xF001);
  synthesise();
  EXPECT_EQ(output().version, 1);
}

}  // namespace
}  // namespace tevra::test
