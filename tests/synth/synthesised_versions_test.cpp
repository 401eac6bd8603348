#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "synth/psi_synthesis.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/transport_packets.h"

// How the version moves is the same for all three tables.

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;

/** How a table is synthesised, and where it is handed out. */
template <class Table>
struct Synthesis;

template <>
struct Synthesis<PAT> {
  static constexpr auto kRun = synthPAT;
  static constexpr int kPid = 0;
  static const PAT& record(const OutputTables& tables) { return tables.dvbTables.pat; }
  static const Packets& packets(const OutputTables& tables) { return tables.patPackets; }
};

template <>
struct Synthesis<SDT> {
  static constexpr auto kRun = synthSDT;
  static constexpr int kPid = 0x11;
  static const SDT& record(const OutputTables& tables) { return tables.dvbTables.sdt; }
  static const Packets& packets(const OutputTables& tables) { return tables.sdtPackets; }
};

template <>
struct Synthesis<PMT> {
  static constexpr auto kRun = synthPMT;
  static constexpr int kPid = kPmtPid;
  static const PMT& record(const OutputTables& tables) { return tables.dvbTables.pmt; }
  static const Packets& packets(const OutputTables& tables) { return tables.pmtPackets; }
};

template <class Table>
class SynthesisedVersion : public fake::PlatformTest {
 protected:
  using Way = Synthesis<Table>;

  int synthesise() {
    fake::clearLog();
    work_.pmt = makeWorkRecord().pmt;  // synthPMT gives it the output's number
    return Way::kRun(work_, stored_);
  }

  [[nodiscard]] const Table& output() const { return Way::record(work_.outputTables); }
  [[nodiscard]] const Packets& packets() const { return Way::packets(work_.outputTables); }

  void expectVersion(int version) const {
    EXPECT_EQ(stored_.version, version);
    EXPECT_EQ(output().version, version);
    EXPECT_EQ(versionOf(sectionsOf(packets(), Way::kPid).at(0)), version);
  }

  ServiceWorkRecord work_ = makeWorkRecord();
  Table stored_;
};

using Tables = testing::Types<PAT, SDT, PMT>;
TYPED_TEST_SUITE(SynthesisedVersion, Tables, );  // the comma: a variadic macro wants an argument

TYPED_TEST(SynthesisedVersion, StaysASecondTimeAndNothingIsSaved) {
  this->synthesise();
  const TypeParam first = this->output();
  const Packets firstPackets = this->packets();
  EXPECT_EQ(this->synthesise(), 0);
  EXPECT_EQ(this->output(), first);
  EXPECT_EQ(this->stored_, first);
  EXPECT_EQ(this->packets(), firstPackets);
  this->expectVersion(1);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "Numero de paquetes necesarios para la sintesis [1]"}));
}

TYPED_TEST(SynthesisedVersion, ThirtyOneIsFollowedByZero) {
  this->stored_.version = 31;
  this->synthesise();
  this->expectVersion(0);
}

TYPED_TEST(SynthesisedVersion, LeadsBackIntoRangeFromWhateverIsStored) {
  const std::vector<std::pair<int32_t, int>> versions = {
      {-1, 0}, {300, 13}, {std::numeric_limits<int32_t>::max(), 0}};
  for (const auto& [stored, next] : versions) {
    this->stored_ = TypeParam();
    this->stored_.version = stored;
    this->synthesise();
    this->expectVersion(next);
  }
}

}  // namespace
}  // namespace tevra::test
