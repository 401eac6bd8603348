#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "synth/psi_synthesis.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

class ProgramPid : public fake::PlatformTest {};

const LogLine kProgramMissing{3, "", "ProgramNumber not found."};
const LogLine kServiceMissing{4, "", "Service not found in STD!!"};

TEST_F(ProgramPid, IsTheOneThatThePatGives) {
  EXPECT_EQ(findProgramPid(2, makePat(1, {{1, 100}, {2, 200}, {3, 300}})), 200);
  EXPECT_EQ(findProgramPid(0, makePat(1, {{0, 16}, {2, 200}})), 16);
  EXPECT_EQ(findProgramPid(2, makePat(1, {{2, 0}})), 0);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ProgramPid, IsTheLastOfSeveral) {
  EXPECT_EQ(findProgramPid(2, makePat(1, {{2, 200}, {1, 100}, {2, 201}, {3, 300}})), 201);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ProgramPid, IsMinusOneForAnAbsentProgramme) {
  EXPECT_EQ(findProgramPid(4, makePat(1, {{1, 100}, {2, 200}})), -1);
  EXPECT_THAT(fake::logLines(), ElementsAre(kProgramMissing));
}

TEST_F(ProgramPid, IsMinusOneForAnEmptyPat) {
  EXPECT_EQ(findProgramPid(0, PAT()), -1);
  EXPECT_THAT(fake::logLines(), ElementsAre(kProgramMissing));
}

TEST_F(ProgramPid, HasSixteenBitsAndASign) {
  EXPECT_EQ(findProgramPid(1, makePat(1, {{1, 0x7FFF}})), 0x7FFF);
  EXPECT_EQ(findProgramPid(1, makePat(1, {{1, 0x8000}})), -0x8000);
  EXPECT_EQ(findProgramPid(1, makePat(1, {{1, 0x12345}})), 0x2345);
}

TEST_F(ProgramPid, MinusOneInThePatIsFoundAndNotLogged) {
  EXPECT_EQ(findProgramPid(1, makePat(1, {{1, 0xFFFF}})), -1);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ProgramPid, NumbersAreComparedAsTheyStand) {
  EXPECT_EQ(findProgramPid(0x10001, makePat(1, {{1, 100}})), -1);
  EXPECT_EQ(findProgramPid(-1, makePat(1, {{0xFFFF, 100}})), -1);
}

class ServiceType : public fake::PlatformTest {};

TEST_F(ServiceType, IsThatOfTheServicesDescriptor) {
  const SDT sdt = makeSdt({makeService(1, {makeServiceDescriptor(0x01)}),
                           makeService(2, {makeDescriptor(0x53, "x"), makeServiceDescriptor(0x19)}),
                           makeService(3, {makeServiceDescriptor(0x02)})});
  EXPECT_EQ(findServiceType(2, sdt), 0x19);
  EXPECT_EQ(findServiceType(3, sdt), 0x02);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ServiceType, IsThatOfTheFirstDescriptor) {
  const SDT sdt =
      makeSdt({makeService(1, {makeServiceDescriptor(0x11), makeServiceDescriptor(0x22)})});
  EXPECT_EQ(findServiceType(1, sdt), 0x11);
}

TEST_F(ServiceType, IsThatOfTheFirstServiceOfThatIdWithADescriptor) {
  const SDT sdt = makeSdt({makeService(1), makeService(1, {makeDescriptor(0x49, "ES")}),
                           makeService(1, {makeServiceDescriptor(0x11)}),
                           makeService(1, {makeServiceDescriptor(0x22)})});
  EXPECT_EQ(findServiceType(1, sdt), 0x11);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ServiceType, IsZeroForAnAbsentService) {
  EXPECT_EQ(findServiceType(4, makeSdt({makeService(1, {makeServiceDescriptor(0x11)})})), 0);
  EXPECT_THAT(fake::logLines(), ElementsAre(kServiceMissing));
}

TEST_F(ServiceType, IsZeroForAnEmptySdt) {
  EXPECT_EQ(findServiceType(0, SDT()), 0);
  EXPECT_THAT(fake::logLines(), ElementsAre(kServiceMissing));
}

TEST_F(ServiceType, IsZeroForAServiceWithoutDescriptor) {
  EXPECT_EQ(findServiceType(1, makeSdt({makeService(1, {makeDescriptor(0x49, "ES")})})), 0);
  EXPECT_THAT(fake::logLines(), ElementsAre(kServiceMissing));
}

TEST_F(ServiceType, OfADescriptorTooShortToDecodeIsNone) {
  const SDT sdt = makeSdt({makeService(1, {makeDescriptor(0x48, std::string("\x11\x00", 2))})});
  EXPECT_EQ(findServiceType(1, sdt), 0);
  EXPECT_THAT(fake::logLines(), ElementsAre(kServiceMissing));
}

TEST_F(ServiceType, IsReadFromADescriptorWhoseLengthsLie) {
  const SDT sdt = makeSdt({makeService(1, {makeDescriptor(0x48,
                                                          "\x11\xFF\xFF"
                                                          "abc")})});
  EXPECT_EQ(findServiceType(1, sdt), 0x11);
}

TEST_F(ServiceType, IsReadFromTheFirstDescriptorThatASectionCanHold) {
  const SDT sdt = makeSdt({makeService(
      1, {makeDescriptor(0x48, "\x11" + std::string(255, 'x')), makeServiceDescriptor(0x22)})});
  EXPECT_EQ(findServiceType(1, sdt), 0x22);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{4, "", "Descriptor [0x48] of [256] bytes left out"}));
}

TEST_F(ServiceType, IsLookedUpAmongValuesAsWideAsInASection) {
  EXPECT_EQ(findServiceType(1, makeSdt({makeService(0x10001, {makeServiceDescriptor(0x11)})})),
            0x11);
  Descriptor wide = makeServiceDescriptor(0x22);
  wide.tag = 0x148;
  EXPECT_EQ(findServiceType(1, makeSdt({makeService(1, {wide})})), 0x22);
}

TEST_F(ServiceType, ZeroInTheDescriptorIsFoundAndNotLogged) {
  EXPECT_EQ(findServiceType(1, makeSdt({makeService(1, {makeServiceDescriptor(0)})})), 0);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

}  // namespace
}  // namespace tevra::test
