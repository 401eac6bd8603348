#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "control/si_control_handler.h"
#include "records/global_output.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/files.h"
#include "tests/system/crash_states.h"
#include "tests/system/daemon.h"
#include "tests/system/kill_restart_load.h"
#include "tests/system/record_files.h"

// The power goes during a life: every state of the disk that CrashStates makes of what the daemon
// has done until then.

namespace tevra::test {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kSeed = 5;
constexpr int kLife = 24;       // calls at least
constexpr int kAfterwards = 8;  // calls after the power is back

const std::vector<std::string>& storeFiles() {
  static const std::vector<std::string> paths = {pidRemapFile(0), tableStoreFile(0),
                                                 eitVersionFile(0)};
  return paths;
}

/** What a daemon did, and what its files held after each answered call. */
struct Life {
  std::string root;
  std::vector<SystemCall> calls;        ///< empty where nothing can be traced
  std::vector<Files> afterAnswers{{}};  ///< first: before any
};

Files storeFilesIn(const std::string& root) {
  Files files;
  for (const std::string& path : storeFiles()) {
    if (fs::exists(root + "/" + path)) {
      files[path] = readText(root + "/" + path);
    }
  }
  return files;
}

Life live() {
  TemporaryDirectory root;
  Daemon daemon(root.path());
  Life life;
  life.root = root.path();
  Tracer tracer(daemon.pid(), {});
  if (tracer.attached()) {
    RunningLoad load(kSeed);
    load.restart("", "", "");
    ControlClient client;
    for (int call = 0; call <= kLife; ++call) {  // the trace may break off in the last answer
      load.callOnce(*client);
      life.afterAnswers.push_back(storeFilesIn(root.path()));
    }
    life.calls = tracer.calls();
  }
  return life;
}

std::string textIn(const Files& files, const std::string& path) {
  const auto file = files.find(path);
  return file == files.end() ? std::string() : file->second;
}

/** A file as it was after the last answer, or as the interrupted call leaves it. */
bool isNeverBehind(const Files& state, const Files& answered, const Files& next) {
  const auto same = [&](const Files& files, const std::string& path) {
    return state.count(path) == files.count(path) && textIn(state, path) == textIn(files, path);
  };
  return std::all_of(storeFiles().begin(), storeFiles().end(), [&](const std::string& path) {
    return same(answered, path) || same(next, path);
  });
}

class PowerCut : public fake::PlatformTest {
 protected:
  PowerCut() {
    globalOutput().setOutputFunction([](const char*) {});
  }

  void cutAfterEachCall(const Life& life);
  void startFrom(const Files& state);

  std::set<std::pair<size_t, Files>> states_;  ///< and how many calls had been answered
  int behind_ = 0;                             ///< of these, how many lose what was handed out
  std::set<Files> good_;
};

void PowerCut::cutAfterEachCall(const Life& life) {
  CrashStates disk(life.root);
  std::string client;
  size_t answered = 0;
  for (const SystemCall& call : life.calls) {
    if (call.name.rfind("accept", 0) == 0 && call.result >= 0) {
      client = std::to_string(call.result);
    }
    answered += call.name == "sendto" && call.arguments.at(0) == client ? 1 : 0;
    disk.take(call);
    for (const Files& state : disk.now()) {
      if (!states_.emplace(answered, state).second) {
        continue;
      }
      const size_t next = std::min(answered + 1, life.afterAnswers.size() - 1);
      if (isNeverBehind(state, life.afterAnswers.at(answered), life.afterAnswers[next])) {
        good_.insert(state);
      } else {
        ++behind_;
      }
    }
  }
  EXPECT_GE(answered, static_cast<size_t>(kLife));
}

/** Whoever starts from there reads it and goes on from it. */
void PowerCut::startFrom(const Files& state) {
  fs::remove_all(path(""));
  fs::create_directories(path("Tornel"));
  for (const auto& [file, text] : state) {
    writeText(path(file), text);
  }
  fake::clearLog();
  SIControlSrvHandler handler(0);
  for (const std::string& file : {tableStoreFile(0), eitVersionFile(0)}) {
    EXPECT_EQ(fake::logged(3, "[MPTS0] Error reading file: " + path(file)), state.count(file) == 0);
  }
  RunningLoad load(kSeed + 1);
  load.restart(textIn(state, pidRemapFile(0)), textIn(state, tableStoreFile(0)),
               textIn(state, eitVersionFile(0)));
  for (int call = 0; call < kAfterwards; ++call) {
    load.callOnce(handler);
  }
  EXPECT_EQ(load.complaints(), std::vector<std::string>());
  EXPECT_NE(load.pids().judge(readText(path(pidRemapFile(0))), {}), Found::kWrong);
  EXPECT_NE(load.tables().judge(readText(path(tableStoreFile(0))), {}), Found::kWrong);
  EXPECT_NE(load.eits().judge(readText(path(eitVersionFile(0))), {}), Found::kWrong);
}

TEST_F(PowerCut, LosesNothingThatWasHandedOut) {
  const Life life = live();
  if (life.calls.empty()) {
    GTEST_SKIP() << "no strace, or nothing may be traced";
  }
  cutAfterEachCall(life);
  for (const Files& state : good_) {
    startFrom(state);
  }
  std::cout << life.calls.size() << " system calls, " << states_.size()
            << " states of the disk: behind what was handed out " << behind_ << ", " << good_.size()
            << " different others started from\n";
  EXPECT_EQ(behind_, 0);
}

}  // namespace
}  // namespace tevra::test
