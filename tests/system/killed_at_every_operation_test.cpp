#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "tests/system/kill_restart.h"
#include "tests/system/tracer.h"

// kill -9 at each operation of a life, one life an operation.

namespace tevra::test {
namespace {

constexpr uint32_t kSeed = 5;
constexpr int kLife = 24;       // calls, which save each file several times
constexpr int kAfterwards = 8;  // calls of the daemon that comes back
constexpr int kShares = 4;      // of the operations, one test each

/** What changes files, or hands out what is in them. */
constexpr const char* kOperations =
    "openat,write,writev,pwrite64,ftruncate,fsync,fdatasync,syncfs,sync,close,?rename,renameat,"
    "renameat2,?unlink,unlinkat,?mkdir,mkdirat,?chmod,fchmod,sendto";

/** Moments that not every life has: a message that goes in two pieces, the client's leaving. */
constexpr int kMomentsToSpare = 3;

/** The moment before the call of this name that is the `count`-th since the life began. */
struct Moment {
  std::string operation;
  int count = 0;
};

/** Empty where nothing can be traced. */
std::vector<Moment> momentsOfALife() {
  KilledDaemon daemon(kSeed);
  Tracer tracer(daemon.daemon().pid(), {"-e", std::string("trace=") + kOperations});
  if (!tracer.attached()) {
    return {};
  }
  daemon.load().run(kLife);
  daemon.expectFilesHoldAll();
  std::map<std::string, int> counts;
  std::vector<Moment> moments;
  for (const SystemCall& call : tracer.calls()) {
    const int count = ++counts[call.name];
    if (call.name != "write" || call.arguments.at(0) != "2") {  // which is the log
      moments.push_back({call.name, count});
    }
  }
  return moments;
}

class KilledAtEveryOperation : public testing::TestWithParam<int> {
 protected:
  void liveUntil(const Moment& moment);

  int lives_ = 0;
  int inTheMiddle_ = 0;  ///< lives that ended so
  int halfWritten_ = 0;  ///< lives that left such a file
  int versionsNotSaved_ = 0;
};

void KilledAtEveryOperation::liveUntil(const Moment& moment) {
  KilledDaemon killed(kSeed);
  Tracer tracer(killed.daemon().pid(), {"-e", "trace=" + moment.operation, "-e",
                                        "inject=" + moment.operation +
                                            ":signal=KILL:when=" + std::to_string(moment.count)});
  ASSERT_TRUE(tracer.attached());
  killed.load().run(kLife);
  inTheMiddle_ += killed.load().answered() < kLife ? 1 : 0;
  killed.daemon().kill();  // where the moment came after the last answer, or not at all
  killed.comeBack();
  killed.load().run(kAfterwards);
  killed.expectFilesHoldAll();
  EXPECT_TRUE(killed.load().complaints().empty());
  bool half = false;
  for (const Tally& tally : killed.tallies()) {
    half = half || tally.of(Found::kHalfWritten) > 0;
  }
  ++lives_;
  halfWritten_ += half ? 1 : 0;
  versionsNotSaved_ += killed.versionsNotSaved();
}

TEST_P(KilledAtEveryOperation, ItLosesNothingThatWasHandedOut) {
  const std::vector<Moment> moments = momentsOfALife();
  if (moments.empty()) {
    GTEST_SKIP() << "no strace, or nothing may be traced";
  }
  for (auto moment = static_cast<size_t>(GetParam()); moment < moments.size() && !HasFatalFailure();
       moment += kShares) {
    SCOPED_TRACE(moments[moment].operation + " " + std::to_string(moments[moment].count));
    liveUntil(moments[moment]);
  }
  std::cout << lives_ << " of " << moments.size() << " operations: half-written files after "
            << halfWritten_ << ", EIT versions handed out but not saved after " << versionsNotSaved_
            << '\n';
  EXPECT_EQ(halfWritten_, 0);
  EXPECT_GE(inTheMiddle_ + kMomentsToSpare, lives_);
}

INSTANTIATE_TEST_SUITE_P(System, KilledAtEveryOperation, testing::Range(0, kShares));

}  // namespace
}  // namespace tevra::test
