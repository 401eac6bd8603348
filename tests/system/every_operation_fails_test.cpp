#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/system/disk_faults.h"
#include "tests/system/kill_restart_model.h"
#include "tests/system/tracer.h"

// Each operation of a round of saves fails once, in one daemon that lives on.

namespace tevra::test {
namespace {

using Options = std::vector<std::string>;

/** The call of this name that is the `count`-th of a round. */
struct Operation {
  std::string name;
  int count = 0;
};

bool isWhole(StoreFile file, const std::string& text) {
  switch (file) {
    case kPids:
      return parse<thrift::in_module::PIDRemap>(text).whole;
    case kTables:
      return parse<thrift::in_module::TableStoreFile>(text).whole;
    default:
      return parse<thrift::in_module::EITTableVersionStoreFile>(text).whole;
  }
}

class EveryOperation : public DiskFaults, public testing::WithParamInterface<const char*> {
 protected:
  /** Options that restrict the tracer to what touches the three files. */
  [[nodiscard]] Options theFiles() const {
    Options options;
    for (const StoreFile file : kStoreFiles) {
      for (const std::string& path :
           {pathOf(file), std::filesystem::weakly_canonical(pathOf(file)).string()}) {
        options.insert(options.end(), {"-P", path, "-P", path + ".new"});  // by name, by descriptor
      }
    }
    return options;
  }

  /** Of a daemon that has served a round from good files; empty where nothing can be traced. */
  std::vector<Operation> operationsOfARound() {
    writeGoodFiles();
    start();
    last_ = serve();
    Tracer tracer(daemon().pid(), theFiles());
    if (!tracer.attached()) {
      return {};
    }
    last_ = serve();
    std::map<std::string, int> counts;
    std::vector<Operation> operations;
    for (const SystemCall& call : tracer.calls()) {
      operations.push_back({call.name, ++counts[call.name]});
    }
    for (const char* name : {"openat", "write", "syncfs", "fsync", "close", "rename"}) {
      EXPECT_EQ(counts[name], 3) << name;
    }
    return operations;
  }

  /** A round in which this is injected, and one after it. */
  void fail(const Options& injections);
  void expectOldOrNew(const std::array<std::string, 3>& before);
  Served serveNext();

  Served last_;
  int failures_ = 0;
  int neither_ = 0;  ///< rounds that left a file neither as it was nor as it should be
};

/** A round gives what follows from the one before it, whatever could be saved of that. */
Served EveryOperation::serveNext() {
  const Served before = last_;
  const Served served = serve();
  EXPECT_EQ(served.pat, before.pat);
  EXPECT_EQ(served.sdt, (before.sdt + 1) % 32);
  EXPECT_EQ(served.pmt, (before.pmt + 1) % 32);
  EXPECT_EQ(served.eit, (before.eit + 1) % 32);
  EXPECT_EQ(served.videoPid, before.videoPid);
  EXPECT_EQ(served.newPid, before.newPid + 1);
  return served;
}

void EveryOperation::fail(const Options& injections) {
  std::array<std::string, 3> before;
  for (const StoreFile file : kStoreFiles) {
    before.at(file) = readText(pathOf(file));
  }
  {
    Options options = theFiles();
    options.insert(options.end(), injections.begin(), injections.end());
    Tracer tracer(daemon().pid(), options);
    ASSERT_TRUE(tracer.attached());
    last_ = serveNext();
    (void)tracer.calls();  // lets go
  }
  expectOldOrNew(before);
  last_ = serveNext();
  EXPECT_EQ(roundErrors_, Lines());
  expectFilesHold(last_);
  ++failures_;
}

/** A save that fails says so and leaves the former file; any other has done its work. */
void EveryOperation::expectOldOrNew(const std::array<std::string, 3>& before) {
  Lines errors;
  bool neither = false;
  for (const StoreFile file : kStoreFiles) {
    const std::string text = readText(pathOf(file));
    if (text == before.at(file)) {
      errors = together({errors, saveErrors(file, false)});
    } else {
      neither = neither || !isWhole(file, text);
    }
    EXPECT_FALSE(std::filesystem::exists(pathOf(file) + ".new"));
  }
  neither_ += neither ? 1 : 0;
  if (!neither) {
    EXPECT_EQ(roundErrors_, errors);
  }
}

TEST_P(EveryOperation, ThatFailsLeavesTheFormerFileAndTheNextSaveGood) {
  const std::vector<Operation> operations = operationsOfARound();
  if (operations.empty()) {
    GTEST_SKIP() << "no strace, or nothing may be traced";
  }
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.name + " " + std::to_string(operation.count));
    fail({"-e", "inject=" + operation.name + ":error=" + GetParam() +
                    ":when=" + std::to_string(operation.count)});
  }
  std::cout << failures_ << " operations failed with " << GetParam()
            << ": a file neither as before nor as it should be after " << neither_ << '\n';
  EXPECT_EQ(neither_, 0);
}

INSTANTIATE_TEST_SUITE_P(DiskFaults, EveryOperation,
                         testing::Values("ENOSPC", "EIO", "EMFILE", "EINTR"),
                         [](const auto& test) { return std::string(test.param); });

using FullDisk = EveryOperation;

TEST_P(FullDisk, OnWhichNothingCanBeMadeOrWrittenLeavesTheFormerFiles) {
  const std::vector<Operation> operations = operationsOfARound();
  if (operations.empty()) {
    GTEST_SKIP() << "no strace, or nothing may be traced";
  }
  // Where a new file cannot be made, an old one can still be opened.
  for (const Operation& operation : operations) {
    if (operation.name == "openat") {
      SCOPED_TRACE("openat " + std::to_string(operation.count));
      fail({"-e", "inject=openat:error=ENOSPC:when=" + std::to_string(operation.count), "-e",
            "inject=write:error=ENOSPC:when=1+"});
    }
  }
  EXPECT_EQ(neither_, 0);
}

INSTANTIATE_TEST_SUITE_P(DiskFaults, FullDisk, testing::Values("ENOSPC"));

}  // namespace
}  // namespace tevra::test
