#include "control/thrift_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "records/global_output.h"
#include "tests/fakes/fake_platform.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;

using ThriftOutput = fake::PlatformTest;

TEST_F(ThriftOutput, BecomesLinesOfLevelSevenAndLeavesStandardErrorAlone) {
  redirectThriftOutput();
  testing::internal::CaptureStderr();
  globalOutput()("100% gone");
  globalOutput().printf("%s died: %d", "TServerTransport", 24);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "100% gone"},
                                            LogLine{7, "", "TServerTransport died: 24"}));
}

}  // namespace
}  // namespace tevra::test
