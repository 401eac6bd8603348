#include "tools/report/facts/stream_checks.h"

#include <algorithm>
#include <cstring>

#include <gmock/gmock.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools::report {
namespace {

using test::Bytes;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kPmtPid = 0x100;
constexpr int kVideoPid = 0x101;
constexpr int kAudioPid = 0x102;
constexpr int kSubtitlePid = 0x103;
constexpr int64_t kTicksPerSlot = kSystemClock / 1000;
constexpr uint8_t kOneBit = 0x01;
constexpr uint8_t kDamaged = 0x80;        // transport_error_indicator
constexpr uint8_t kScrambled = 0x80;      // transport_scrambling_control
constexpr uint8_t kDiscontinuity = 0x80;  // its indicator
constexpr uint8_t kAdaptationField = 0x20;
constexpr uint8_t kUnitStart = 0x40;  // payload_unit_start_indicator
constexpr uint8_t kPtsFlag = 0x80;    // PTS_DTS_flags

/** A PES packet begins in it (ISO/IEC 13818-1, 2.4.3.6), as far as there is room. */
TsPacket withPts(TsPacket packet) {
  const Bytes header = {0, 0, 1, 0xE0, 0, 0, 0x80, kPtsFlag};
  const size_t room = kTsPacketSize - packet.payloadOffset();
  std::copy_n(header.begin(), std::min(header.size(), room),
              packet.data() + packet.payloadOffset());
  packet.data()[1] |= kUnitStart;
  return packet;
}

/**
 * A multiplex in which all is well, a packet a millisecond: PAT, PMT and CAT every 100 ms, the SDT
 * every 500 ms, PCRs and audio every 20 ms, each with a PTS, and stuffing. A test takes one thing
 * away or changes it.
 */
class Multiplex {
 public:
  std::function<bool(int slot)> leavesOut = [](int /*slot*/) { return false; };
  std::function<void(int slot, TsPacket& packet)> changes = [](int /*slot*/, TsPacket&) {};
  int64_t firstPcr = 0;
  Bytes pmt =
      test::makePmt(101, 1, kVideoPid,
                    {{2, kVideoPid, {}},
                     {4, kAudioPid, {}},
                     {6, kSubtitlePid, test::descriptor(0x59, {'e', 'n', 'g', 0x10, 0, 1, 0, 1})}});
  Bytes cat = test::makeSection({0x01, 0xFFFF, 1}, {});
  test::PacketWriter writer;

  [[nodiscard]] std::vector<TsPacket> packets(int slots) {
    std::vector<TsPacket> all;
    for (int slot = 0; slot < slots; ++slot) {
      all.push_back(leavesOut(slot) ? writer.stream(kNullPid, 0) : packetOf(slot));
      changes(slot, all.back());
    }
    return all;
  }

 private:
  TsPacket packetOf(int slot) {
    switch (slot % 100) {
      case 0:
        return writer.section(kPatPid, test::makePat(1, 1, {{0, 0x10}, {101, kPmtPid}})).at(0);
      case 1:
        return writer.section(kPmtPid, pmt).at(0);
      case 4:
        return writer.section(kCatPid, cat).at(0);
      case 5:
        return slot % 500 == 5 ? writer.section(kSdtPid, test::makeSdt(1, 1, 101, "Uno")).at(0)
                               : writer.stream(kNullPid, 0);
      default:
        return streamPacketOf(slot);
    }
  }

  TsPacket streamPacketOf(int slot) {
    switch (slot % 20) {
      case 2:
        return withPts(
            writer.stream(kVideoPid, 1, (firstPcr + slot * kTicksPerSlot) % kPcrModulus));
      case 3:
        return withPts(writer.stream(kAudioPid, 2));
      default:
        return writer.stream(kNullPid, 0);
    }
  }
};

/** Bytes from memory. */
class MemorySource : public ByteSource {
 public:
  explicit MemorySource(Bytes bytes) : bytes_(std::move(bytes)) {}
  [[nodiscard]] size_t read(uint8_t* buffer, size_t size) override {
    const size_t count = std::min(size, bytes_.size() - at_);
    std::memcpy(buffer, bytes_.data() + at_, count);
    at_ += count;
    return count;
  }

 private:
  Bytes bytes_;
  size_t at_ = 0;
};

Bytes bytesOf(const std::vector<TsPacket>& packets) {
  Bytes bytes;
  for (const TsPacket& packet : packets) {
    bytes.insert(bytes.end(), packet.data(), packet.data() + kTsPacketSize);
  }
  return bytes;
}

std::vector<StreamCheck> checksOf(Bytes bytes) {
  MemorySource source(std::move(bytes));
  return checksOf(StreamSurvey(source, kPidPeriod, [](const SiTable&, size_t) {}));
}

std::vector<StreamCheck> checksOf(const std::vector<TsPacket>& packets) {
  return checksOf(bytesOf(packets));
}

constexpr int kSlots = 6000;

std::vector<StreamCheck> checksOf(Multiplex multiplex) {
  return checksOf(multiplex.packets(kSlots));
}

/** The numbers of the checks with this result. */
std::vector<std::string> numbersOf(const std::vector<StreamCheck>& checks, CheckResult result) {
  std::vector<std::string> numbers;
  for (const StreamCheck& check : checks) {
    if (check.result == result) {
      numbers.push_back(check.number);
    }
  }
  return numbers;
}

std::vector<std::string> failedOf(const std::vector<StreamCheck>& checks) {
  return numbersOf(checks, CheckResult::kFailed);
}

/** The only one that failed; all others passed. */
StreamCheck onlyFailure(const std::vector<StreamCheck>& checks) {
  EXPECT_EQ(11U, numbersOf(checks, CheckResult::kPassed).size());
  const auto failed = std::find_if(checks.begin(), checks.end(), [](const StreamCheck& check) {
    return check.result == CheckResult::kFailed;
  });
  return failed == checks.end() ? StreamCheck() : *failed;
}

/** Number, count, worst value in milliseconds, and the one PID: "1.4 1x -1 ms 257". */
std::string briefly(const StreamCheck& check) {
  const long long worst = check.worst ? std::llround(*check.worst * 1000) : -1;
  return check.number + " " + std::to_string(check.count) + "x " + std::to_string(worst) + " ms " +
         (check.pids.size() == 1 ? std::to_string(check.pids[0].pid)
                                 : std::to_string(check.pids.size()) + " PIDs");
}

std::vector<std::string> failuresOf(const std::vector<StreamCheck>& checks) {
  std::vector<std::string> failures;
  for (const StreamCheck& check : checks) {
    if (check.result == CheckResult::kFailed) {
      failures.push_back(briefly(check));
    }
  }
  return failures;
}

/** Leaves the slots of one packet in each hundred out, from one to before another. */
std::function<bool(int)> without(int place, int every, int from, int to) {
  return [=](int slot) { return slot % every == place && slot >= from && slot < to; };
}

/** These bits of a byte of one packet. */
std::function<void(int, TsPacket&)> set(int at, size_t byte, uint8_t bits) {
  return [=](int slot, TsPacket& packet) { packet.data()[byte] |= slot == at ? bits : uint8_t{0}; };
}

/** The same of every packet of the audio. */
std::function<void(int, TsPacket&)> setInAudio(size_t byte, uint8_t bits) {
  return [=](int /*slot*/, TsPacket& packet) {
    packet.data()[byte] |= packet.pid() == kAudioPid ? bits : uint8_t{0};
  };
}

/** One packet in the place of a null packet. */
std::function<void(int, TsPacket&)> put(int at, const std::function<TsPacket()>& make) {
  return [=](int slot, TsPacket& packet) {
    if (slot == at) {
      packet = make();
    }
  };
}

constexpr int kFreeSlot = 3010;

TEST(StreamChecks, AllPassWhereAllIsWell) {
  const std::vector<StreamCheck> checks = checksOf(Multiplex());
  EXPECT_THAT(numbersOf(checks, CheckResult::kPassed),
              ElementsAre("1.1", "1.2", "1.3.a", "1.4", "1.5.a", "1.6", "2.1", "2.2", "2.3a",
                          "2.3b", "2.5", "2.6"));
  EXPECT_FALSE(firstPriorityFailed(checks));
  EXPECT_NEAR(0.1, checks[2].worst.value(), 0.0001);
  EXPECT_NEAR(0.02, checks[8].worst.value(), 0.0001);
  EXPECT_EQ("5.2.1", checks[2].clause);
  EXPECT_EQ("PAT_error_2", checks[2].name);
  EXPECT_EQ("0.5 s", checks[2].limit);
}

TEST(StreamChecks, PassWhereverARecordingBeginsAndEnds) {
  Multiplex multiplex;
  multiplex.firstPcr = kPcrModulus - 2 * kSystemClock;  // runs over its end
  const Bytes whole = bytesOf(multiplex.packets(6000));
  for (const size_t cut : {size_t{1}, size_t{188} * 97 + 100, size_t{188} * 503}) {
    const Bytes part(whole.begin() + static_cast<std::ptrdiff_t>(cut),
                     whole.end() - static_cast<std::ptrdiff_t>(cut));
    EXPECT_THAT(failedOf(checksOf(part)), IsEmpty()) << cut;
  }
}

TEST(StreamChecks, OneSyncByteIsAnErrorAndMoreInARowALoss) {
  Bytes bytes = bytesOf(Multiplex().packets(kSlots));
  bytes[kFreeSlot * kTsPacketSize] = 0x00;
  EXPECT_EQ("1.2 1x -1 ms 0 PIDs", briefly(onlyFailure(checksOf(bytes))));
  bytes[(kFreeSlot + 1) * kTsPacketSize] = 0x00;
  bytes[(kFreeSlot + 2) * kTsPacketSize] = 0x00;
  const std::vector<StreamCheck> checks = checksOf(bytes);
  EXPECT_THAT(failedOf(checks), ElementsAre("1.1", "1.2"));
  EXPECT_EQ(1U, checks[0].count);
  EXPECT_EQ(1U, checks[1].count) << "where sync is lost no byte has to be one";
}

TEST(StreamChecks, JunkBetweenPacketsIsALossOfSync) {
  Bytes bytes = bytesOf(Multiplex().packets(kSlots));
  const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(kFreeSlot * kTsPacketSize);
  bytes.insert(place, 77, 0x12);
  EXPECT_THAT(failedOf(checksOf(bytes)), ElementsAre("1.1", "1.2"));
}

TEST(StreamChecks, APatHasToComeEveryHalfSecond) {
  Multiplex multiplex;
  multiplex.leavesOut = without(0, 100, 1000, 1500);  // from 900 to 1500 ms
  EXPECT_EQ("1.3.a 1x 600 ms 0", briefly(onlyFailure(checksOf(multiplex))));
  multiplex.leavesOut = without(0, 100, 1000, 1400);
  EXPECT_THAT(failedOf(checksOf(multiplex)), IsEmpty()) << "500 ms are as long as it may take";
}

TEST(StreamChecks, APatThatIsAwayAtTheEndsOfARecordingIsMissed) {
  Multiplex multiplex;
  multiplex.leavesOut = without(0, 100, 0, 700);
  EXPECT_EQ("1.3.a 1x 700 ms 0", briefly(onlyFailure(checksOf(multiplex))));
  multiplex.leavesOut = without(0, 100, 5300, 6000);  // 5200 to 5999
  EXPECT_EQ("1.3.a 1x 799 ms 0", briefly(onlyFailure(checksOf(multiplex))));
}

TEST(StreamChecks, AWrongPatCountsAsNone) {
  Multiplex multiplex;
  multiplex.changes = [](int slot, TsPacket& packet) {
    if (packet.pid() == kPatPid && slot >= 1000 && slot < 1500) {
      packet.data()[10] ^= 1;
    }
  };
  const auto checks = checksOf(multiplex);
  EXPECT_THAT(failedOf(checks), ElementsAre("1.3.a", "2.2"));
  EXPECT_EQ("1.3.a 1x 600 ms 0", briefly(checks[2]));
  EXPECT_EQ("2.2 5x -1 ms 0", briefly(checks[7]));
}

TEST(StreamChecks, NothingButPatsMayComeOnTheirPid) {
  Multiplex multiplex;
  multiplex.changes =
      put(kFreeSlot, [&] { return multiplex.writer.section(kPatPid, multiplex.cat).at(0); });
  EXPECT_EQ("1.3.a 1x 100 ms 0", briefly(onlyFailure(checksOf(multiplex.packets(kSlots)))));
}

TEST(StreamChecks, APatMayNotBeScrambled) {
  Multiplex multiplex;
  multiplex.changes = set(3000, 3, kScrambled);
  EXPECT_EQ("1.3.a 1x 200 ms 0", briefly(onlyFailure(checksOf(multiplex))));
}

TEST(StreamChecks, WithoutAPatNothingIsKnownOfPmts) {
  Multiplex multiplex;
  multiplex.leavesOut = without(0, 100, 0, kSlots);
  const std::vector<StreamCheck> checks = checksOf(multiplex);
  EXPECT_EQ("1.3.a 1x 5999 ms 0", briefly(checks[2]));
  EXPECT_THAT(numbersOf(checks, CheckResult::kNotMeasurable),
              ElementsAre("1.5.a", "1.6", "2.3a", "2.3b", "2.5"));
  EXPECT_EQ("no PAT", checks[4].reason);
}

TEST(StreamChecks, APacketThatIsLostIsAContinuityError) {
  Multiplex multiplex;
  multiplex.changes = [&](int slot, TsPacket& /*packet*/) {
    multiplex.writer.lose(kAudioPid, slot == kFreeSlot ? 1 : 0);
  };
  EXPECT_EQ("1.4 1x -1 ms 258", briefly(onlyFailure(checksOf(multiplex.packets(kSlots)))));
}

TEST(StreamChecks, APacketMayComeTwiceButNotThrice) {
  std::vector<TsPacket> packets = Multiplex().packets(kSlots);
  const auto audio = packets[3003];
  ASSERT_EQ(kAudioPid, audio.pid());
  packets[3010] = audio;
  EXPECT_THAT(failedOf(checksOf(packets)), IsEmpty());
  packets[3011] = audio;
  EXPECT_EQ("1.4 1x -1 ms 258", briefly(onlyFailure(checksOf(packets))));
  packets[3012] = audio;
  EXPECT_EQ("1.4 2x -1 ms 258", briefly(onlyFailure(checksOf(packets))));
}

TEST(StreamChecks, APacketThatHasTheCounterOfTheLastAloneRepeatsNothing) {
  std::vector<TsPacket> packets = Multiplex().packets(kSlots);
  packets[3010] = packets[3003];
  packets[3010].data()[100] ^= 1;
  EXPECT_EQ("1.4 1x -1 ms 258", briefly(onlyFailure(checksOf(packets))));
}

TEST(StreamChecks, ARepeatedPacketHasAPcrOfItsOwn) {
  std::vector<TsPacket> packets = Multiplex().packets(kSlots);
  packets[3010] = packets[3002];
  TsPacket later = test::PacketWriter().stream(kVideoPid, 1, 3010 * kTicksPerSlot);
  std::copy_n(later.data() + 4, 8, packets[3010].data() + 4);
  EXPECT_THAT(failedOf(checksOf(packets)), IsEmpty());
}

TEST(StreamChecks, APmtHasToComeEveryHalfSecond) {
  Multiplex multiplex;
  multiplex.leavesOut = without(1, 100, 1000, 1600);
  EXPECT_EQ("1.5.a 1x 700 ms 256", briefly(onlyFailure(checksOf(multiplex))));
  multiplex.leavesOut = without(1, 100, 5400, 6000);  // 5301 to 5999
  EXPECT_EQ("1.5.a 1x 698 ms 256", briefly(onlyFailure(checksOf(multiplex))));
}

TEST(StreamChecks, APmtThatNeverComesIsMissedFromThePatOn) {
  Multiplex multiplex;
  multiplex.leavesOut = without(1, 100, 0, kSlots);
  const auto checks = checksOf(multiplex);
  EXPECT_THAT(failedOf(checks), ElementsAre("1.5.a"));
  EXPECT_EQ("1.5.a 1x 5999 ms 256", briefly(checks[4]));
  EXPECT_EQ(CheckResult::kNotMeasurable, checks[5].result) << "no stream is known";
}

TEST(StreamChecks, APmtThatThePatNoLongerNamesNeedNotCome) {
  Multiplex multiplex;
  multiplex.changes = [&](int slot, TsPacket& packet) {
    if (slot >= 1000 && packet.pid() == kPatPid) {
      const int counter = packet.continuityCounter();
      packet = multiplex.writer.section(0x1000, test::makePat(1, 2, {{0, 0x10}})).at(0);
      packet.setPid(kPatPid);
      packet.setContinuityCounter(counter);
    }
  };
  multiplex.leavesOut = [](int slot) { return slot > 1000 && slot % 100 == 1; };
  EXPECT_THAT(failedOf(checksOf(multiplex.packets(kSlots))), IsEmpty());
}

TEST(StreamChecks, APmtMayNotBeScrambled) {
  Multiplex multiplex;
  multiplex.changes = set(3001, 3, kScrambled);
  EXPECT_EQ("1.5.a 1x 200 ms 256", briefly(onlyFailure(checksOf(multiplex))));
}

TEST(StreamChecks, VideoAndAudioMayNotStayAwayFor5Seconds) {
  Multiplex multiplex;
  multiplex.leavesOut = without(3, 20, 500, 5600);
  EXPECT_THAT(failuresOf(checksOf(multiplex)),
              ElementsAre("1.6 1x 5120 ms 258", "2.5 1x 5120 ms 258"));
  multiplex.leavesOut = without(3, 20, 900, kSlots);  // 883 to 5999
  EXPECT_THAT(failuresOf(checksOf(multiplex)),
              ElementsAre("1.6 1x 5116 ms 258", "2.5 1x 5116 ms 258"));
  multiplex.leavesOut = without(3, 20, 500, 5400);
  EXPECT_THAT(failedOf(checksOf(multiplex)), ElementsAre("2.5"));
}

TEST(StreamChecks, AudioForTheFewMayPause) {
  Multiplex multiplex;
  multiplex.pmt = test::makePmt(
      101, 1, kVideoPid,
      {{2, kVideoPid, {}},
       {4, kAudioPid, test::descriptor(0x0A, {'e', 'n', 'g', 0x03})}});  // for who cannot see well
  multiplex.leavesOut = without(3, 20, 0, kSlots);
  EXPECT_THAT(failedOf(checksOf(multiplex)), IsEmpty());
}

TEST(StreamChecks, ThePeriodOfPidsIsTheUsers) {
  Multiplex multiplex;
  multiplex.leavesOut = without(3, 20, 500, 2600);
  MemorySource source(bytesOf(multiplex.packets(kSlots)));
  const StreamSurvey survey(source, 2, [](const SiTable&, size_t) {});
  const auto checks = checksOf(survey);
  EXPECT_THAT(failuresOf(checks), Contains("1.6 1x 2120 ms 258"));
  EXPECT_EQ("2 s", checks[5].limit);
}

TEST(StreamChecks, ADamagedPacketIsATransportErrorAndNothingElse) {
  Multiplex multiplex;
  multiplex.changes = set(3003, 1, kDamaged);
  EXPECT_EQ("2.1 1x -1 ms 258", briefly(onlyFailure(checksOf(multiplex))));
}

TEST(StreamChecks, DamagedPacketsEndNoWait) {
  Multiplex multiplex;
  multiplex.changes = setInAudio(1, kDamaged);
  const auto checks = checksOf(multiplex);
  EXPECT_THAT(failedOf(checks), ElementsAre("1.6", "2.1", "2.5"));
  EXPECT_EQ("1.6 1x 5998 ms 258", briefly(checks[5]));
}

TEST(StreamChecks, AWrongCrcIsAnErrorOnItsPid) {
  Multiplex multiplex;
  multiplex.changes = [](int slot, TsPacket& packet) {
    packet.data()[20] ^= slot == 3005 ? kOneBit : uint8_t{0};
  };
  EXPECT_EQ("2.2 1x -1 ms 17", briefly(onlyFailure(checksOf(multiplex))));
}

TEST(StreamChecks, AWrongCrcOfAnotherTableThanAPmtOnItsPidIsNone) {
  Multiplex multiplex;
  Bytes other = test::makeSection({0x80, 1, 1}, {1, 2, 3});
  other.back() ^= 1;
  multiplex.changes =
      put(kFreeSlot, [&] { return multiplex.writer.section(kPmtPid, other).at(0); });
  EXPECT_THAT(failedOf(checksOf(multiplex.packets(kSlots))), IsEmpty());
}

TEST(StreamChecks, PcrsHaveToComeEveryTenthOfASecond) {
  Multiplex multiplex;
  multiplex.leavesOut = without(2, 20, 3000, 3120);  // 2982 to 3122
  multiplex.changes = set(3122, 5, kDiscontinuity);  // the step is announced
  EXPECT_EQ("2.3a 1x 140 ms 257", briefly(onlyFailure(checksOf(multiplex))));
}

TEST(StreamChecks, AStepOfPcrsHasToBeAnnounced) {
  for (const int step : {10'000, 2000, 300, -1000}) {  // milliseconds
    Multiplex multiplex;
    multiplex.changes = [&](int slot, TsPacket& /*packet*/) {
      multiplex.firstPcr = 2 * kSystemClock + (slot < 3000 ? 0 : step * kTicksPerSlot);
    };
    EXPECT_EQ("2.3b 1x " + std::to_string(step + 20) + " ms 257",
              briefly(onlyFailure(checksOf(multiplex.packets(kSlots)))));
  }
}

/** Of a multiplex whose clock is the video and then the audio, which goes back by `back` slots. */
double worstStep(int back) {
  Multiplex multiplex;
  multiplex.leavesOut = [](int slot) { return slot == 2022; };  // of the video 40 ms
  multiplex.changes = [&](int slot, TsPacket& packet) {
    if (slot == 3000) {
      multiplex.pmt = test::makePmt(101, 2, kAudioPid, {{4, kAudioPid, {}}});
    }
    if (packet.pid() == kAudioPid) {
      const int late = slot < 4000 ? 0 : back;
      packet = multiplex.writer.stream(kAudioPid, 2, (slot - late) * kTicksPerSlot);
    }
  };
  return checksOf(multiplex.packets(kSlots))[9].worst.value();
}

TEST(StreamChecks, TheWorstStepOfPcrsIsTheLargestUnlessASmallerOneFailed) {
  EXPECT_NEAR(0.040, worstStep(0), 0.0001);
  EXPECT_NEAR(-0.005, worstStep(25), 0.0001);
}

TEST(StreamChecks, OfAGapInTheRecordingCountersAndClockTell) {
  std::vector<TsPacket> packets = Multiplex().packets(kSlots);
  packets.erase(packets.begin() + 2010, packets.begin() + 4015);  // 2 s
  const auto checks = checksOf(packets);
  EXPECT_THAT(failedOf(checks), ElementsAre("1.4", "2.3b"));
  EXPECT_EQ("2.3b 1x 2020 ms 257", briefly(checks[9]));
}

TEST(StreamChecks, PcrsThatAreRareAtASteadyRateAreMeasured) {
  Multiplex multiplex;
  multiplex.leavesOut = [](int slot) { return slot % 20 == 2 && slot % 300 != 2; };
  const auto checks = checksOf(multiplex);
  EXPECT_THAT(failedOf(checks), ElementsAre("2.3a", "2.3b"));
  EXPECT_EQ("2.3a 20x 300 ms 257", briefly(checks[8]));
  EXPECT_NEAR(0.1, checks[2].worst.value(), 0.0001);
}

TEST(StreamChecks, APtsHasToComeEvery700Milliseconds) {
  Multiplex multiplex;
  const auto hasNone = [&](int pid, int from, int to) {
    multiplex.changes = [=](int slot, TsPacket& packet) {
      if (packet.pid() == pid && slot >= from && slot < to) {
        packet.data()[packet.payloadOffset() + 7] &= static_cast<uint8_t>(~kPtsFlag);
      }
    };
  };
  hasNone(kAudioPid, 500, 1200);  // 483 to 1203
  EXPECT_EQ("2.5 1x 720 ms 258", briefly(onlyFailure(checksOf(multiplex))));
  hasNone(kVideoPid, 0, kSlots);
  EXPECT_EQ("2.5 1x 5998 ms 257", briefly(onlyFailure(checksOf(multiplex))));
  hasNone(kAudioPid, 500, 1180);  // 483 to 1183
  const auto checks = checksOf(multiplex);
  EXPECT_THAT(failedOf(checks), IsEmpty());
  EXPECT_NEAR(0.7, checks[10].worst.value(), 0.0001);
}

TEST(StreamChecks, NothingButTheHeaderOfAPesPacketHasAPts) {
  const std::vector<std::pair<size_t, int>> others = {{0, 1},    {1, 1},   {2, 0}, {6, 0xC0},
                                                      {6, 0x40}, {7, 0x40}};  // of its bytes
  for (const auto& [place, value] : others) {
    Multiplex multiplex;
    multiplex.changes = [place = place, value = value](int /*slot*/, TsPacket& packet) {
      if (packet.pid() == kAudioPid) {
        packet.data()[packet.payloadOffset() + place] = static_cast<uint8_t>(value);
      }
    };
    EXPECT_THAT(failedOf(checksOf(multiplex)), ElementsAre("2.5")) << place << ": " << value;
  }
  Multiplex multiplex;
  multiplex.changes = [](int /*slot*/, TsPacket& packet) {
    packet.data()[1] &= packet.pid() == kAudioPid ? uint8_t{0xFF & ~kUnitStart} : uint8_t{0xFF};
  };
  EXPECT_THAT(failedOf(checksOf(multiplex)), ElementsAre("2.5")) << "amid a PES packet";
}

TEST(StreamChecks, APtsIsReadWhereTheHeaderOfItsPesPacketIsWhole) {
  for (const auto& [adaptation, failures] :
       std::map<uint8_t, size_t>{{175, 0}, {176, 1}, {183, 1}}) {
    Multiplex multiplex;
    multiplex.changes = [length = adaptation](int /*slot*/, TsPacket& packet) {
      if (packet.pid() == kAudioPid) {
        packet.data()[3] |= kAdaptationField;
        packet.data()[4] = length;
        packet.data()[5] = 0;
        packet = withPts(packet);
      }
    };
    EXPECT_EQ(failures, failedOf(checksOf(multiplex)).size()) << int{adaptation};
  }
}

TEST(StreamChecks, OfWhatIsScrambledNoPtsIsExpected) {
  Multiplex multiplex;
  const auto scramble = [&](const std::set<int>& pids) {
    multiplex.changes = [=](int slot, TsPacket& packet) {
      packet.data()[3] |= slot > 100 && pids.count(packet.pid()) != 0 ? kScrambled : uint8_t{0};
      packet.data()[1] &= static_cast<uint8_t>(pids.count(packet.pid()) != 0 ? ~kUnitStart : 0xFF);
    };
  };
  scramble({kAudioPid});
  EXPECT_THAT(numbersOf(checksOf(multiplex), CheckResult::kPassed), Contains("2.5"));
  scramble({kAudioPid, kVideoPid});
  const StreamCheck check = checksOf(multiplex)[10];
  EXPECT_EQ(CheckResult::kNotMeasurable, check.result);
  EXPECT_EQ("all is scrambled", check.reason);
}

TEST(StreamChecks, ScrambledPacketsNeedACat) {
  Multiplex multiplex;
  multiplex.changes = setInAudio(3, kScrambled);
  EXPECT_THAT(failedOf(checksOf(multiplex)), IsEmpty());
  multiplex.leavesOut = without(4, 100, 0, kSlots);
  EXPECT_EQ("2.6 300x -1 ms 258", briefly(onlyFailure(checksOf(multiplex))));
}

TEST(StreamChecks, NothingButCatsMayComeOnTheirPid) {
  Multiplex multiplex;
  multiplex.changes =
      put(kFreeSlot, [&] { return multiplex.writer.section(kCatPid, multiplex.pmt).at(0); });
  EXPECT_EQ("2.6 1x -1 ms 1", briefly(onlyFailure(checksOf(multiplex.packets(kSlots)))));
}

TEST(StreamChecks, WithoutAClockNoIntervalIsMeasured) {
  Multiplex multiplex;
  multiplex.leavesOut = without(2, 20, 0, kSlots);
  const std::vector<StreamCheck> checks = checksOf(multiplex);
  EXPECT_THAT(failedOf(checks), IsEmpty());
  EXPECT_THAT(numbersOf(checks, CheckResult::kNotMeasurable),
              ElementsAre("1.3.a", "1.5.a", "1.6", "2.3a", "2.3b", "2.5"));
  EXPECT_EQ("no PCR", checks[2].reason);
}

TEST(StreamChecks, WithoutAClockWhatNeedsNoneStillFails) {
  Multiplex multiplex;
  multiplex.leavesOut = without(2, 20, 0, kSlots);
  multiplex.changes =
      put(kFreeSlot, [&] { return multiplex.writer.section(kPatPid, multiplex.cat).at(0); });
  EXPECT_THAT(failedOf(checksOf(multiplex.packets(kSlots))), ElementsAre("1.3.a"));
}

TEST(StreamChecks, ARecordingShorterThanALimitDoesNotShowIt) {
  const std::vector<StreamCheck> checks = checksOf(Multiplex().packets(400));
  EXPECT_THAT(numbersOf(checks, CheckResult::kNotMeasurable),
              ElementsAre("1.3.a", "1.5.a", "1.6", "2.5"));
  EXPECT_EQ("shorter than the limit", checks[2].reason);
}

/** "PAT 0: 59x 100 100 100": PID, count, shortest, mean and longest in milliseconds. */
std::vector<std::string> briefly(const std::vector<IntervalFact>& facts) {
  std::vector<std::string> lines;
  for (const IntervalFact& fact : facts) {
    lines.push_back(fact.what + " " + std::to_string(fact.pid) + ": " + std::to_string(fact.count) +
                    "x");
    for (const double seconds : {fact.shortest, fact.mean, fact.longest}) {
      lines.back() += " " + std::to_string(std::llround(seconds * 1000));
    }
  }
  return lines;
}

TEST(StreamChecks, IntervalsAreThoseOfTheStreamsClock) {
  MemorySource source(bytesOf(Multiplex().packets(kSlots)));
  const StreamSurvey survey(source, kPidPeriod, [](const SiTable&, size_t) {});
  EXPECT_THAT(briefly(intervalsOf(survey)),
              ElementsAre("PAT 0: 59x 100 100 100", "PMT 256: 59x 100 100 100",
                          "SDT 17: 11x 500 500 500", "PCR 257: 299x 20 20 20"));
  EXPECT_NEAR(5.999, survey.seconds().value(), 1e-6);
  EXPECT_THAT(
      briefly(tableIntervalsOf(survey, kVideoPid, 501)),
      ElementsAre("PAT 0: 149x 40 40 40", "PMT 501: 149x 40 40 40", "SDT 17: 6x 880 880 880"));
}

TEST(StreamChecks, ARecordingShorterThanAnIntervalDoesNotHaveIt) {
  MemorySource source(bytesOf(Multiplex().packets(500)));
  const StreamSurvey survey(source, kPidPeriod, [](const SiTable&, size_t) {});
  EXPECT_THAT(briefly(tableIntervalsOf(survey, kVideoPid, 501)),
              ElementsAre("PAT 0: 12x 40 40 40", "PMT 501: 12x 40 40 40"));
}

}  // namespace
}  // namespace tevra::tools::report
