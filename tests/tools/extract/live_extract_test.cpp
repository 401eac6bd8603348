#include "tools/extract/live_extract.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/tools/support/continuity_check.h"
#include "tests/tools/support/recording_daemon.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/engine/private_engine.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::TemporaryFile;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using Engine = thrift::in_module::im_SIControlSrvIf;

constexpr int kService = 101;
constexpr int kPmt = 0x100;
constexpr int kVideo = 0x101;
constexpr int kAudio = 0x102;
constexpr int64_t kPcrInterval = kSystemClock / 25;

/** For global service id 1201, with the video as the one stream. */
std::map<int32_t, SPTSConfiguration> answerWithVideo() {
  auto answer = test::sampleAnswer();
  auto& items = answer.at(1201).pidItems;
  items.resize(1);
  items.push_back(test::pidItem(kVideo, 502, 0x0C));
  return answer;
}

/** A source whose packets come one at a time. */
class Air : public ByteSource {
 public:
  void pat(int transportStreamId = 1, int version = 0, bool hasService = true) {
    stream_.add(kPatPid, test::makePat(transportStreamId, version,
                                       hasService ? test::Programs{{kService, kPmt}, {7, 0x200}}
                                                  : test::Programs{{7, 0x200}}));
  }
  void sdt(int version = 0, const std::string& name = "Uno", int transportStreamId = 1) {
    stream_.add(kSdtPid, test::makeSdt(transportStreamId, version, kService, name));
  }
  void pmt(int version = 0, bool hasAudio = false) {
    std::vector<test::Stream> streams = {{0x1B, kVideo, {}}};
    if (hasAudio) {
      streams.push_back({0x04, kAudio, {}});
    }
    stream_.add(kPmt, test::makePmt(kService, version, kVideo, streams));
  }
  void otherPmt(int version = 0) {
    stream_.add(0x200, test::makePmt(7, version, 0x201, {{0x1B, 0x201, {}}}));
  }
  void all() {
    pat();
    pmt();
    sdt();
  }
  void section(int pid, const test::Bytes& section) { stream_.add(pid, section); }
  /** So much of the video, with a PCR in every packet, and as much of the sound. */
  void play(double seconds) {
    const auto count = static_cast<int>(seconds * 25);
    for (int i = 0; i < count; ++i) {
      stream_.add(kVideo, clock_ += kPcrInterval);
      stream_.add(kAudio);
    }
  }
  /** `action` is run when all that has been added by now has been read. */
  void then(const std::function<void()>& action) { actions_[stream_.packets().size()] = action; }

  /** Its end is not its own. */
  void stop() { isStopped_ = true; }

  [[nodiscard]] bool isStopped() const override { return isStopped_; }
  size_t read(uint8_t* buffer, size_t size) override {
    const auto action = actions_.find(next_);
    if (action != actions_.end()) {
      action->second();
    }
    if (next_ == stream_.packets().size() || size < kTsPacketSize) {
      return 0;
    }
    std::copy_n(stream_.packets()[next_++].data(), kTsPacketSize, buffer);
    return kTsPacketSize;
  }

 private:
  test::StreamBuilder stream_;
  std::map<size_t, std::function<void()>> actions_;
  size_t next_ = 0;
  int64_t clock_ = 0;
  bool isStopped_ = false;
};

class LiveExtractTest : public testing::Test {
 protected:
  LiveExtractTest() { daemon_.answer = answerWithVideo(); }

  static OutputDraft draftOf(std::optional<int> service) {
    OutputDraft draft;
    draft.service = service;
    return draft;
  }

  /** Adds an output, in otherFile_, with an answer of its own. */
  void addOther(int service) {
    drafts_.push_back(draftOf(service));
    drafts_[1].origin = "other";
    drafts_[1].output.globalSid = 7;
    pattern_ = OutputPattern(file_.path().substr(0, file_.path().size() - 4) + "{gsid}");
    daemon_.answer[7] = daemon_.answer.at(1201);
  }

  /** Of the drafts' outputs, by `engine`. */
  void run(Engine& engine) {
    const LiveEvents events = {[this](const auto& /*inventory*/, const auto& outputs) {
                                 begunWith_ = outputs.at(0).output.inputSid;
                               },
                               [this](const std::string& line) { told_.push_back(line); }};
    extract_ = std::make_unique<LiveExtract>(LiveRequest{"air", drafts_, pattern_}, engine, events);
    (void)extract_->run(air_);
  }
  void run() {
    withPrivateEngine("", [this](Engine& engine) { run(engine); });
  }
  /** By one that says what daemon_.answer holds, of global service id 1201 first. */
  void runWithDaemon() {
    drafts_[0].output.globalSid = 1201;
    run(daemon_);
  }

  [[nodiscard]] std::string errorOfRun() {
    try {
      run();
    } catch (const ToolError& error) {
      return error.what();
    }
    return "";
  }

  [[nodiscard]] const SPTSConfiguration& answer() const {
    return extract_->outputs().at(0).configuration;
  }
  [[nodiscard]] int pidOf(int inputPid) const {
    for (const PIDItem& item : answer().pidItems) {
      if (item.inputPid == inputPid) {
        return item.outputPid;
      }
    }
    return -1;
  }
  /** How many packets of an output PID are written. */
  [[nodiscard]] long written(int pid) const {
    const auto packets = file_.readPackets();
    return std::count_if(packets.begin(), packets.end(),
                         [&](const TsPacket& packet) { return packet.pid() == pid; });
  }
  /** The versions of the tables on a PID, each once, in the order in which they go out. */
  [[nodiscard]] std::vector<int> versionsOn(int pid) const {
    std::vector<int> versions;
    for (const TsPacket& packet : file_.readPackets()) {
      const int version =
          packet.data()[10] >> 1 & 0x1F;  // behind header, pointer, table and length
      if (packet.pid() == pid && (versions.empty() || versions.back() != version)) {
        versions.push_back(version);
      }
    }
    return versions;
  }
  const TemporaryFile file_{"1201"};
  const TemporaryFile otherFile_{"7"};
  Air air_;
  test::RecordingDaemon daemon_;
  std::vector<OutputDraft> drafts_ = {draftOf(kService)};
  OutputPattern pattern_{file_.path()};
  std::unique_ptr<LiveExtract> extract_;
  std::vector<std::string> told_;
  std::optional<int> begunWith_;
};

TEST_F(LiveExtractTest, BeginsWhenTheTablesOfItsServiceAreThere) {
  air_.play(1);
  air_.pat();
  air_.pmt();
  air_.play(1);
  air_.sdt();
  air_.play(1);
  run();
  EXPECT_EQ(25, written(pidOf(kVideo)));
  EXPECT_EQ(kPatPid, file_.readPackets().at(0).pid());
  EXPECT_THAT(told_, IsEmpty());
  EXPECT_EQ("Uno", extract_->outputs().at(0).output.resolvedName());
}

TEST_F(LiveExtractTest, WaitsTwoSecondsForAnSdtAndThenEntersTheService) {
  air_.pat();
  air_.pmt();
  air_.play(2.52);
  run();
  EXPECT_NEAR(13, static_cast<double>(written(pidOf(kVideo))), 1);
  EXPECT_THAT(told_, ElementsAre(StartsWith("there is no SDT to describe service 101: ")));
}

TEST_F(LiveExtractTest, TakesTheSdtThatComesLater) {
  air_.pat();
  air_.pmt();
  air_.play(3);
  air_.sdt(5, "Late");
  air_.play(1);
  run();
  EXPECT_EQ("Late", extract_->outputs().at(0).output.resolvedName());
  EXPECT_THAT(versionsOn(kSdtPid), SizeIs(2));
  EXPECT_THAT(told_, ElementsAre(StartsWith("there is no SDT"),
                                 StartsWith(file_.path() + ": SDT version ")));
}

TEST_F(LiveExtractTest, RefusesAServiceThatTheStreamLacks) {
  drafts_ = {draftOf(9)};
  air_.all();
  air_.otherPmt();
  air_.play(3);
  EXPECT_EQ("service 9 has no PMT in this stream; services that have: 7, 101 \"Uno\"",
            errorOfRun());
}

TEST_F(LiveExtractTest, ReplacesNothingWhereAnOutputCannotBeHad) {
  addOther(kService);
  daemon_.answer.at(7).outputTables.pmtPackets.clear();
  file_.write(std::string("former"));
  air_.all();
  EXPECT_THROW(runWithDaemon(), ToolError);
  EXPECT_EQ("former", file_.read());
}

TEST_F(LiveExtractTest, SaysWhatWasMissingWhenTheSourceEndsEarly) {
  air_.pat();
  air_.pmt();
  air_.play(1);
  EXPECT_EQ("air ended while its tables were still waited for", errorOfRun());
}

TEST_F(LiveExtractTest, SaysThatTheSourceWasStoppedWhereItDidNotEnd) {
  air_.pat();
  air_.pmt();
  air_.stop();
  EXPECT_EQ("air was stopped while its tables were still waited for", errorOfRun());
}

TEST_F(LiveExtractTest, TakesTheFirstServiceHoweverLateItsPmtComes) {
  drafts_ = {draftOf(std::nullopt)};
  air_.all();
  air_.play(0.5);
  air_.otherPmt();
  air_.play(0.5);
  run();
  EXPECT_EQ(7, begunWith_);
}

TEST_F(LiveExtractTest, MovesOnWithTheInputsPmt) {
  air_.all();
  air_.play(1);
  air_.pmt(1, true);
  air_.play(1);
  run();
  const int pmtPid = pidOf(kPmt);
  EXPECT_EQ(50, written(pidOf(kVideo)));
  EXPECT_EQ(25, written(pidOf(kAudio)));
  EXPECT_THAT(versionsOn(pmtPid), ElementsAre(1, 2));
  EXPECT_THAT(told_, ElementsAre(file_.path() + ": PMT version 2"));
  test::expectCountersRunOn(file_.readPackets());
}

TEST_F(LiveExtractTest, MovesOnWithTheServicesName) {
  air_.all();
  air_.play(1);
  air_.sdt(1, "Due");
  air_.play(1);
  run();
  EXPECT_THAT(versionsOn(kSdtPid), ElementsAre(1, 2));
  EXPECT_EQ("Due", extract_->outputs().at(0).output.resolvedName());
}

/** What comes after the tables that the output begins with, and how often the engine is asked. */
struct Change {
  std::string what;
  int pid;
  test::Bytes section;
  size_t requests;
};

/** In this order: each counts on those before. */
std::vector<Change> changes(bool takesCat) {
  const auto sdtWith = [](int version, int other) {
    return test::makeSection({0x42, 1, version}, test::joined({{0xFF, 0x01, 0xFF},
                                                               test::be16(kService),
                                                               {0xFD, 0x80, 0},
                                                               test::be16(other),
                                                               {0xFD, 0x80, 0}}));
  };
  return {
      {"an EIT", kEitPid, test::makeEit({0x4E, kService}, 0, {1}), 0},
      {"a TOT", kTotPid, test::makeTot(1'000'000'000), 0},
      {"a NIT", kNitPid, test::makeSection({0x40, 1}, {0xF0, 0, 0xF0, 0}), 0},
      {"a BAT", kSdtPid, test::makeSection({0x4A, 1}, {0xF0, 0, 0xF0, 0}), 0},
      {"another's PMT", 0x200, test::makePmt(7, 0, 0x201, {}), 0},
      {"a CAT", kCatPid, test::makeSection({0x01, 0xFFFF}, {}), takesCat ? 1U : 0U},
      {"the service's SDT entry", kSdtPid, sdtWith(2, 7), 1},
      {"another's SDT entry", kSdtPid, sdtWith(3, 8), 0},
      {"another's end in the PAT", kPatPid, test::makePat(1, 1, {{kService, kPmt}}), 0},
      {"its PMT", kPmt, test::makePmt(kService, 1, kVideo, {}), 1},
      {"another PID for the PMT", kPatPid, test::makePat(1, 2, {{kService, 0x300}}), 1},
  };
}

TEST_F(LiveExtractTest, AsksAgainWhenWhatTheAnswerDependsOnHasChangedAndOnlyThen) {
  for (const int nextNode : {0, 1}) {
    daemon_ = test::RecordingDaemon();
    daemon_.answer = answerWithVideo();
    drafts_[0].output.nextNode = nextNode;
    air_ = Air();
    air_.all();
    air_.play(1);
    air_.then([&] {
      EXPECT_EQ(1U, daemon_.requests.size());
      daemon_.requests.clear();
    });
    const std::vector<Change> all = changes(nextNode == 1);
    for (const Change& change : all) {
      air_.section(change.pid, change.section);
      air_.then([&] {
        EXPECT_EQ(change.requests, daemon_.requests.size()) << change.what << ", " << nextNode;
        daemon_.requests.clear();
      });
    }
    runWithDaemon();
    EXPECT_THAT(daemon_.calls,
                AllOf(Contains(StartsWith("setEITPresentFollowing")),
                      Contains(StartsWith("setNIT")), Contains(StartsWith("setBAT"))));
  }
}

TEST_F(LiveExtractTest, GoesOnAsItWasWhereThereIsNoAnswer) {
  air_.all();
  air_.play(1);
  air_.then([&] { daemon_.answer.clear(); });
  air_.pmt(1);
  air_.play(1);
  air_.then([&] {
    daemon_.answer = answerWithVideo();
    daemon_.answer.at(1201).outputTables.pmtPackets.clear();
  });
  air_.pmt(2);
  air_.play(1);
  runWithDaemon();
  EXPECT_THAT(told_, ElementsAre(StartsWith("there is no output for service 101 "),
                                 StartsWith("the daemon's answer holds no usable PMT packets")));
  EXPECT_GT(written(501), 25);
  test::expectCountersRunOn(file_.readPackets());
}

TEST_F(LiveExtractTest, PausesWhileTheStreamLacksTheServiceAndUntilItsPmtComesAgain) {
  for (const int version : {0, 3}) {
    air_ = Air();
    told_.clear();
    air_.all();
    air_.play(1);
    air_.pat(1, 1, false);
    air_.play(1);
    air_.pat(1, 2);
    air_.play(1);  // whose packets these are nobody knows yet
    air_.pmt(version);
    air_.play(1);
    run();
    EXPECT_EQ(50, written(pidOf(kVideo))) << version;
    test::expectCountersRunOn(file_.readPackets());
    EXPECT_THAT(told_, ElementsAre(file_.path() + ": pauses, for service 101 is not in the stream",
                                   StartsWith(file_.path() + ": goes on")));
  }
}

TEST_F(LiveExtractTest, FollowsTheSourceIntoAnotherTransportStream) {
  air_.all();
  air_.play(1);
  air_.pat(2);
  air_.play(1);  // whose packets these are nobody knows yet
  air_.pmt();
  air_.sdt(0, "Uno", 2);
  air_.play(1);
  run();
  EXPECT_EQ(50, written(pidOf(kVideo)));
  ASSERT_FALSE(told_.empty());
  EXPECT_EQ("the transport stream is now 2 (0x0002), no longer 1 (0x0001): waiting for its tables",
            told_[0]);
  EXPECT_EQ(2, answer().outputTables.dvbTables.pat.transportStreamId);
  test::expectCountersRunOn(file_.readPackets());
}

TEST_F(LiveExtractTest, LeavesTheSdtOfAnotherTransportStreamUntilItsPatComes) {
  air_.all();
  air_.play(1);
  air_.section(kSdtPid, test::makeSdt(2, 0, 7, "Seven"));
  air_.play(1);
  air_.pat(2);
  air_.pmt();
  air_.sdt(0, "Uno", 2);
  air_.play(1);
  run();
  EXPECT_THAT(told_, Not(Contains(HasSubstr("the SDT does not describe"))));
  EXPECT_THAT(versionsOn(kSdtPid), SizeIs(2));
}

TEST_F(LiveExtractTest, WaitsForItsServiceInAnotherTransportStream) {
  air_.all();
  air_.play(1);
  air_.pat(2, 0, false);
  air_.sdt(0, "Uno", 2);
  air_.play(3);
  air_.pat(2, 1);
  air_.pmt();
  air_.play(1);
  run();
  EXPECT_EQ(50, written(pidOf(kVideo)));
  EXPECT_THAT(told_, Contains(file_.path() + ": pauses, for service 101 is not in the stream"));
}

TEST_F(LiveExtractTest, PausesInAnotherTransportStreamUntilThereIsAnAnswer) {
  addOther(kService);
  air_.all();
  air_.play(1);
  air_.then([&] { daemon_.answer.clear(); });
  air_.pat(2);
  air_.pmt();
  air_.sdt(0, "Uno", 2);
  air_.otherPmt();  // for which nothing is said again
  air_.play(1);
  air_.then([&] {
    daemon_.answer = {{7, answerWithVideo().at(1201)}, {1201, SPTSConfiguration()}};
  });
  air_.pmt(1);
  air_.play(1);
  air_.then([&] { daemon_.answer.at(1201) = daemon_.answer.at(7); });
  air_.pmt(2);
  air_.play(1);
  runWithDaemon();
  EXPECT_EQ(50U, extract_->outputs()[0].pidPackets.at(502));
  EXPECT_EQ(75U, extract_->outputs()[1].pidPackets.at(502));
  const std::string first = file_.path();
  const std::string other = otherFile_.path();
  EXPECT_THAT(told_,
              ElementsAre(StartsWith("the transport stream is now 2 "),
                          StartsWith(first + ": pauses, for there is no output for service 101 "),
                          StartsWith(other + ": pauses, for there is no output for service 101 "),
                          StartsWith(first + ": pauses, for the daemon's answer holds no usable"),
                          other + ": goes on", first + ": goes on"));
}

TEST_F(LiveExtractTest, TellsOfSilenceOnceAndOfItsEnd) {
  air_.all();
  air_.play(1);
  const auto silences = [this](const std::vector<int>& milliseconds) {
    for (const int silence : milliseconds) {
      extract_->silent(std::chrono::milliseconds(silence));
    }
  };
  air_.then([&] { silences({200, 800}); });
  air_.play(1);
  air_.then([&] { silences({200, 1000, 1200, 12'400}); });
  air_.play(1);
  run();
  EXPECT_THAT(told_,
              ElementsAre("nothing comes from air: waiting for it", "air is back after 12 s"));
  EXPECT_EQ(75, written(pidOf(kVideo)));
}

TEST_F(LiveExtractTest, MovesOnWithAnOutputThoughAnotherHasNoAnswer) {
  addOther(7);
  for (OutputDraft& draft : drafts_) {
    draft.output.nextNode = 1;  // for which the CAT counts
  }
  air_.all();
  air_.otherPmt();
  air_.play(1);
  air_.then([&] {
    daemon_.answer.erase(7);
    daemon_.answer.at(1201).outputTables.dvbTables.sdt.version = 9;
  });
  air_.section(kCatPid, test::makeSection({0x01, 0xFFFF}, {}));
  air_.play(1);
  runWithDaemon();
  EXPECT_EQ(9, answer().outputTables.dvbTables.sdt.version);
  EXPECT_THAT(told_, Contains(StartsWith("there is no output for service 7 ")));
}

TEST_F(LiveExtractTest, TellsOnceOfAStreamWithoutAPat) {
  air_.sdt();
  air_.play(5);
  air_.all();
  air_.sdt(1);
  air_.play(1);
  run();
  EXPECT_THAT(told_, ElementsAre("air has no PAT so far: waiting for it"));
  EXPECT_EQ(25, written(pidOf(kVideo)));
}

}  // namespace
}  // namespace tevra::tools
