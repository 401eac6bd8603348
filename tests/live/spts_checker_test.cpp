#include "tests/live/spts_checker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/live/live_multiplex.h"

namespace tevra::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using tools::kTsPacketSize;
using tools::TsPacket;

constexpr int kMegabits = 10;
constexpr int kPmtPid = 0x50;

/** Does without a fault what is checked, and then with the one that a case wants. */
class Relay {
 public:
  /** Passes on what the multiplex sends in so many seconds. */
  void play(double seconds) {
    const auto packets = static_cast<uint64_t>(seconds * multiplex.packetsPerSecond());
    for (const uint64_t end = multiplex.packets() + packets; multiplex.packets() < end;) {
      const TsPacket packet = multiplex.next(0);
      const auto stamp = readStamp(packet);
      if (stamp && multiplex.sent().count(stamp->stream()) != 0) {
        announce();
        output(packet);
      }
      repeatTables();
    }
  }

  /** Has packets of one stream altered, the first of them `from` packets from now on. */
  void alterNext(int from, int count, const std::function<bool(TsPacket&)>& how) {
    const int pid = static_cast<int>(announced_.back().second);
    alter = [=](TsPacket& packet) mutable {
      const bool isMeant = packet.pid() == pid && --from < 0 && --count >= 0;
      return !isMeant || how(packet);
    };
  }

  void sendDatagram(size_t size) {
    const std::vector<uint8_t> bytes(size);
    checker.take(bytes.data(), bytes.size(), 0);
  }

  LiveMultiplex multiplex{kMegabits};
  SptsChecker checker;
  double psiSeconds = 0.05;
  double sdtSeconds = 0.5;
  bool announcesAnew = true;
  bool isLost = false;  ///< whatever is sent
  int versionStep = 1;
  std::function<bool(TsPacket&)> alter = [](TsPacket&) { return true; };  ///< false: is dropped

 private:
  /** The tables, when the service has got a stream. */
  void announce() {
    std::vector<StreamId> streams;
    for (const auto& [id, packets] : multiplex.sent()) {
      if (id.first + 1 == multiplex.eras().size()) {
        streams.push_back(id);
      }
    }
    if (streams != announced_ && (announcesAnew || announced_.empty())) {
      announced_ = streams;
      version_ += versionStep;
      psiNext_ = sdtNext_ = 0;
      repeatTables();
    }
  }

  void repeatTables() {
    const auto now = static_cast<double>(multiplex.packets());
    if (now >= psiNext_ && !announced_.empty()) {
      insert(kPatPid, tools::test::makePat(1, 1, {{LiveMultiplex::kService, kPmtPid}}));
      insert(kPmtPid, pmt());
      psiNext_ = now + psiSeconds * multiplex.packetsPerSecond();
    }
    if (now >= sdtNext_ && !announced_.empty()) {
      insert(kSdtPid, tools::test::makeSdt(1, 1, LiveMultiplex::kService, "Tres"));
      sdtNext_ = now + sdtSeconds * multiplex.packetsPerSecond();
    }
  }

  [[nodiscard]] tools::test::Bytes pmt() const {
    std::vector<tools::test::Stream> streams;
    for (const StreamId& id : announced_) {
      streams.push_back({0x1B, static_cast<int>(id.second), {}});
    }
    return tools::test::makePmt(LiveMultiplex::kService, version_ % 32, streams.front().pid,
                                streams);
  }

  void insert(int pid, const tools::test::Bytes& section) {
    for (const TsPacket& packet : writer_.section(pid, section)) {
      output(packet);
    }
  }

  void output(TsPacket packet) {
    if (!alter(packet)) {
      return;
    }
    datagram_.insert(datagram_.end(), packet.data(), packet.data() + kTsPacketSize);
    if (datagram_.size() == 7 * kTsPacketSize) {
      if (!isLost) {
        checker.take(datagram_.data(), datagram_.size(), 0);
      }
      datagram_.clear();
    }
  }

  tools::test::PacketWriter writer_;
  std::vector<uint8_t> datagram_;
  std::vector<StreamId> announced_;
  int version_ = 0;
  double psiNext_ = 0;
  double sdtNext_ = 0;
};

TEST(SptsChecker, FindsNothingWrongInASoundStreamWhateverItsMultiplexDoes) {
  Relay relay;
  relay.play(2);
  EXPECT_THAT(relay.checker.pmts().back().streams, SizeIs(3));
  relay.multiplex.addStream();
  relay.play(1);
  EXPECT_THAT(relay.checker.pmts().back().streams, SizeIs(4));
  relay.multiplex.changeTransportStream();
  relay.play(1.5);
  relay.checker.finish();
  EXPECT_THAT(relay.checker.faults().lines(), IsEmpty());
  EXPECT_EQ(relay.checker.intervals().clockChanges(), 1);
  EXPECT_THAT(relay.checker.received(), SizeIs(7));
  EXPECT_THAT(relay.checker.beginnings(), SizeIs(2));
  EXPECT_EQ(relay.checker.shortDatagrams(), 0U);
}

constexpr auto kDrop = [](TsPacket&) { return false; };

/** Alters a byte. */
std::function<bool(TsPacket&)> flipped(size_t at) {
  return [at](TsPacket& packet) {
    packet.data()[at] ^= 1;
    return true;
  };
}

/** What an extraction does wrong, half a second after its beginning, and what is to be said. */
struct Wrong {
  const char* name;
  std::function<void(Relay&)> does;
  const char* fault;
};

void PrintTo(const Wrong& wrong, std::ostream* out) {
  *out << wrong.name;
}

const std::vector<Wrong> kWrongs = {
    {"LostPacket", [](Relay& relay) { relay.alterNext(5, 1, kDrop); }, "continuity counter"},
    {"SixteenLostPackets", [](Relay& relay) { relay.alterNext(5, 16, kDrop); },
     "goes on with packet"},
    {"ChangedPayload", [](Relay& relay) { relay.alterNext(5, 1, flipped(187)); }, "damaged"},
    {"ChangedStamp", [](Relay& relay) { relay.alterNext(5, 1, flipped(20)); }, "damaged"},
    {"ChangedPcr",
     [](Relay& relay) {
       relay.alter = [](TsPacket& packet) { return !packet.pcr() || flipped(11)(packet); };
     },
     "damaged"},
    {"LatePatAndPmt", [](Relay& relay) { relay.psiSeconds = 0.13; }, "no PAT for 1"},
    {"LateSdt", [](Relay& relay) { relay.sdtSeconds = 1.2; }, "no SDT for 1"},
    {"NoMoreTables", [](Relay& relay) { relay.psiSeconds = 100; }, "no PMT for 1"},
    {"DamagedTable",
     [](Relay& relay) {
       relay.alter = [](TsPacket& packet) {
         return packet.pid() != kPmtPid || flipped(12)(packet);
       };
     },
     "damaged"},
    {"RepeatedVersion",
     [](Relay& relay) {
       relay.versionStep = 0;
       relay.multiplex.addStream();
     },
     "goes from version 3 to 3"},
    {"StreamNotAnnounced",
     [](Relay& relay) {
       relay.announcesAnew = false;
       relay.multiplex.addStream();
     },
     "that the PMT does not name"},
    {"StreamThatBeginsLate",
     [](Relay& relay) {
       relay.multiplex.addStream();
       relay.alter = [](TsPacket& packet) {
         const auto stamp = readStamp(packet);
         return !stamp || stamp->sequence >= 5;
       };
     },
     "goes on with packet"},
    {"OddDatagram", [](Relay& relay) { relay.sendDatagram(1000); }, "a datagram of 1000 bytes"},
    {"NoSyncByte", [](Relay& relay) { relay.sendDatagram(188); }, "without sync byte"},
};

class SptsCheckerFinds : public testing::TestWithParam<Wrong> {};

TEST_P(SptsCheckerFinds, WhatIsWrong) {
  Relay relay;
  relay.play(0.5);
  ASSERT_THAT(relay.checker.faults().lines(), IsEmpty());
  GetParam().does(relay);
  relay.play(1.5);
  relay.checker.finish();
  EXPECT_THAT(relay.checker.faults().lines(), Contains(HasSubstr(GetParam().fault)));
}

INSTANTIATE_TEST_SUITE_P(Extraction, SptsCheckerFinds, testing::ValuesIn(kWrongs),
                         [](const auto& wrong) { return std::string(wrong.param.name); });

TEST(SptsChecker, DoesNotCountWhatWasLostOnTheWayToIt) {
  Relay relay;
  relay.play(0.5);
  relay.isLost = true;
  relay.play(0.05);
  relay.isLost = false;
  relay.checker.forget();
  relay.play(0.5);
  EXPECT_THAT(relay.checker.faults().lines(), IsEmpty());
}

TEST(SptsChecker, CountsDatagramsThatAreNotFull) {
  Relay relay;
  relay.sendDatagram(6 * kTsPacketSize);
  EXPECT_EQ(relay.checker.shortDatagrams(), 1U);
}

}  // namespace
}  // namespace tevra::test
