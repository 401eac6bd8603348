#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/sanitizers.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/process_figures.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;

class DaemonResources : public testing::Test {
 protected:
  [[nodiscard]] int64_t threads() const {
    const std::string tasks = "/proc/" + std::to_string(daemon_.pid()) + "/task";
    return std::distance(std::filesystem::directory_iterator(tasks), {});
  }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  DaemonSetup quiet_ = [] {
    DaemonSetup setup;
    setup.level = 4;
    return setup;
  }();
  Daemon daemon_{root_.path(), quiet_};
  ProcessFigures figures_{daemon_.pid()};
};

// That they do not grow: soak_test.cpp.

TEST_F(DaemonResources, AreTwoThreads) {
  if (kSanitized || kEmulated) {
    GTEST_SKIP() << "a sanitizer or an emulator has threads of its own";
  }
  EXPECT_EQ(threads(), 2);
}

/** About 5 MB in memory. */
EITMap largeSchedule() {
  EITMap schedule;
  for (int32_t service = 1; service <= 10; ++service) {
    for (int32_t tableId = 0x50; tableId <= 0x57; ++tableId) {
      EIT table = eit(service, tableId, 0);
      table.events.assign(60, table.events.at(0));
      for (EITEvent& event : table.events) {
        event.descriptors.assign(2, makeDescriptor(0x4E, std::string(200, 'x')));
      }
      schedule[service][tableId] = table;
    }
  }
  return schedule;
}

TEST_F(DaemonResources, GiveBackWhatALargeCallTookForItself) {
  if (kHasForeignMemory) {
    GTEST_SKIP() << "a sanitizer keeps freed memory, an emulator what it translates";
  }
  const EITMap schedule = largeSchedule();
  ControlClient client;
  client->setTOT(totAt(std::time(nullptr)));
  const int64_t before = figures_.residentSize();
  figures_.resetPeak();
  client->setEITSchedule(schedule);
  ASSERT_TRUE(client->sendCmd(7));  // answered behind the large one's clean-up
  const int64_t peak = figures_.peakResidentSize() - before;
  const int64_t held = figures_.residentSize() - before;
  EXPECT_GT(peak, 8'000);
  // Received and restamped it is there twice; in the call itself it was there a third time.
  EXPECT_LT(held * 10, peak * 8) << held << " of " << peak << " kB";
}

}  // namespace
}  // namespace tevra::test
