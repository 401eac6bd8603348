#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "control/control_processor.h"
#include "control/si_control_handler.h"
#include "records/frame_protocol.h"
#include "records/global_output.h"
#include "store/kept_entry.h"
#include "store/kept_packets.h"
#include "tests/fakes/fake_platform.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/environment.h"
#include "tests/support/files.h"
#include "tests/support/raw_socket.h"
#include "tests/support/sanitizers.h"
#include "tests/system/multiplex.h"
#include "tests/system/record_files.h"
#include "tests/system/soak_calls.h"

// The same random calls to two handlers, of which one uses the texts and packets that it has kept
// and the other makes all of them anew: nobody may see a difference.

namespace {

bool mayUseKept = true;
int64_t textsUsed = 0;
int64_t packetsUsed = 0;

}  // namespace

// The linker sends every call of the two functions here; the names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

bool __real__ZNK5tevra8KeptText6isMadeEv(const tevra::KeptText* text);
bool __wrap__ZNK5tevra8KeptText6isMadeEv(const tevra::KeptText* text) {
  const bool used = mayUseKept && __real__ZNK5tevra8KeptText6isMadeEv(text);
  textsUsed += used ? 1 : 0;
  return used;
}

bool __real__ZNK5tevra11KeptPackets5areOfEibi(const tevra::KeptPackets* packets, int32_t version,
                                              bool currentNext, int32_t pid);
bool __wrap__ZNK5tevra11KeptPackets5areOfEibi(const tevra::KeptPackets* packets, int32_t version,
                                              bool currentNext, int32_t pid) {
  const bool used =
      mayUseKept && __real__ZNK5tevra11KeptPackets5areOfEibi(packets, version, currentNext, pid);
  packetsUsed += used ? 1 : 0;
  return used;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace tevra::test {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TMemoryBuffer;
using Client = thrift::in_module::im_SIControlSrvClient;
using Call = SoakCalls::Call;

constexpr int kCalls = kSlowed ? 1000 : 1500;
constexpr int kCallsPerStart = 40;
constexpr std::time_t kNow = 1700000000;

/** Random calls, with tables that no broadcaster would send: too large, and now and then not
 * current. */
class Calls {
 public:
  explicit Calls(uint32_t seed) : calls_(seed), dice_(seed + 1) {}

  /** The next one, as a client writes it. */
  std::string next() {
    const auto buffer = std::make_shared<TMemoryBuffer>();
    Client client(std::make_shared<TBinaryProtocol>(buffer));
    send(client, calls_.next());
    return buffer->getBufferAsString();
  }

  [[nodiscard]] bool onceIn(int32_t calls) { return dice_.below(calls) == 0; }

 private:
  void send(Client& client, Call call);
  PMT pmt();

  /** Only now and then another one than before. */
  template <class Table>
  Table flagged(Table table) {
    table.currentNext = dice_.percent(70);
    return table;
  }

  SoakCalls calls_;
  Dice dice_;
};

/** Of some services larger than a section, than a stream's part of it, and than a descriptor. */
PMT Calls::pmt() {
  constexpr int32_t kSection = 101, kStream = 102, kDescriptor = 103;
  PMT pmt = flagged(calls_.pmt());
  const Descriptor longest = makeDescriptor(0x52, std::string(255, 's'));
  if (pmt.programNumber == kSection) {
    pmt.descriptors.assign(5, longest);
  } else if (pmt.programNumber == kStream) {
    pmt.esList[0].descriptors.assign(5, longest);
  } else if (pmt.programNumber == kDescriptor) {
    pmt.esList[0].descriptors.push_back(makeDescriptor(0x52, std::string(300, 's')));
  }
  return pmt;
}

void Calls::send(Client& client, Call call) {
  switch (call) {
    case Call::kPat:
      return client.send_setPAT(flagged(calls_.pat()));
    case Call::kSdt:
      return client.send_setSDT(flagged(calls_.sdt()));
    case Call::kPmt:
      return client.send_setPMT(pmt());
    case Call::kCat:
      return client.send_setCAT(calls_.cat());
    case Call::kNit:
      return client.send_setNIT(calls_.nit());
    case Call::kBat:
      return client.send_setBAT(calls_.bat());
    case Call::kTot:
      return client.send_setTOT(totAt(kNow + calls_.clockDifference()));
    case Call::kPresentFollowing:
      return client.send_setEITPresentFollowing(calls_.presentFollowing());
    case Call::kSchedule:
      return client.send_setEITSchedule(calls_.schedule());
    case Call::kCommand:
      return client.send_sendCmd(calls_.command());
    case Call::kSetData:
      return client.send_SISetData(calls_.data());
    case Call::kGetData:
      return client.send_getSIData();
    case Call::kOutputs:
      return client.send_getSrvOutputData(calls_.request());
  }
}

/** What can be seen of a call, by name. */
using Trace = std::map<std::string, std::string>;

/** A handler in a configuration root of its own. */
class Side {
 public:
  Side(bool usesKept, const RawListener& mainTask) : usesKept_(usesKept), mainTask_(mainTask) {}

  /** A new process on the same files. */
  Trace start() {
    return traced([this] {
      handler_ = std::make_shared<SIControlSrvHandler>(0);
      return std::string();
    });
  }

  Trace call(std::string message) {
    return traced([&] {
      const auto in = std::make_shared<TMemoryBuffer>(reinterpret_cast<uint8_t*>(message.data()),
                                                      static_cast<uint32_t>(message.size()));
      const auto out = std::make_shared<TMemoryBuffer>();
      (void)makeControlProcessor(handler_)->process(std::make_shared<FrameProtocol>(in),
                                                    std::make_shared<FrameProtocol>(out), nullptr);
      return out->getBufferAsString();
    });
  }

 private:
  template <class Step>
  Trace traced(Step step) {
    mayUseKept = usesKept_;
    fake::platform().configurationRoot = root_.path();
    fake::clearLog();
    Trace trace = {{"answer", step()}, {"log", ""}, {"notifications", ""}};
    for (const fake::LogLine& line : fake::logLines()) {
      addLine(trace, line);
    }
    for (const std::string& file : {pidRemapFile(0), tableStoreFile(0), eitVersionFile(0)}) {
      trace[file] = readText(root_ / file);
    }
    return trace;
  }

  /** Also what MainTask got, where it says so; without the root, which is another on each side. */
  void addLine(Trace& trace, const fake::LogLine& line) {
    std::ostringstream text;
    text << line << "\n";
    std::string whole = text.str();
    if (const size_t root = whole.find(root_.path()); root != std::string::npos) {
      whole.erase(root, root_.path().size());
    }
    trace["log"] += whole;
    if (line.text.rfind("MainTask notified", 0) == 0 || line.text == "I need Configuration!!!") {
      trace["notifications"] += mainTask_.takeConnection();
    }
  }

  const bool usesKept_;
  const RawListener& mainTask_;
  const TemporaryDirectory root_;
  std::shared_ptr<SIControlSrvHandler> handler_;
};

/** Where the texts begin to differ. */
std::string difference(const std::string& kept, const std::string& anew) {
  constexpr std::ptrdiff_t kBefore = 60;
  constexpr size_t kShown = 160;
  const auto same = std::mismatch(kept.begin(), kept.end(), anew.begin(), anew.end()).first;
  const auto from = static_cast<size_t>(std::max<std::ptrdiff_t>(same - kept.begin() - kBefore, 0));
  return "with what is kept\n" + kept.substr(from, kShown) + "\nall made anew\n" +
         anew.substr(from, kShown);
}

class WhatIsKept : public fake::PlatformTest {
 protected:
  WhatIsKept() {
    globalOutput().setOutputFunction([](const char*) {});
    fake::platform().utcTime = static_cast<uint64_t>(dvbTime(kNow));
    std::cout << "TORNEL_SEED=" << seed_ << '\n';
  }

  template <class Step>
  void expectSame(Step step) {
    const Trace kept = step(kept_);
    for (const auto& [name, text] : step(anew_)) {
      ASSERT_TRUE(kept.at(name) == text) << name << ": " << difference(kept.at(name), text);
    }
    log_ += kept.at("log");
  }

  const uint32_t seed_ =
      static_cast<uint32_t>(fromEnvironment("TORNEL_SEED", std::random_device()()));
  const RawListener mainTask_{9256, 128};  // as many as a call may tell it
  Side kept_{true, mainTask_};
  Side anew_{false, mainTask_};
  std::string log_;
};

TEST_F(WhatIsKept, ShowsInNoByteOfAnswersNotificationsLogAndFiles) {
  Calls calls(seed_);
  for (int call = 0; call < kCalls && !HasFatalFailure(); ++call) {
    SCOPED_TRACE("call " + std::to_string(call) + ", seed " + std::to_string(seed_));
    if (call == 0 || calls.onceIn(kCallsPerStart)) {
      expectSame([](Side& side) { return side.start(); });
    }
    fake::platform().createDirectoryResult = calls.onceIn(20) ? 1 : 0;  // a save fails
    const std::string message = calls.next();
    expectSame([&](Side& side) { return side.call(message); });
  }
  std::cout << textsUsed << " texts and " << packetsUsed << " times packets were kept ones\n";
  EXPECT_GT(textsUsed, kCalls / 2);
  EXPECT_GT(packetsUsed, kCalls / 20);
  for (const char* seen :
       {"Direct inputSID", "needs [2] sections", "do not fit a section", "of [300] bytes left out",
        "ProgramNumber not found", "Error writing tables", "Service not found in STD",
        "is erased from the table store struct"}) {
    EXPECT_NE(log_.find(seen), std::string::npos) << seen;
  }
}

}  // namespace
}  // namespace tevra::test
