#include "control/thrift_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "records/global_output.h"
#include "tests/fakes/fake_platform.h"

namespace {

using testing::ElementsAre;
using tevra::fake::LogLine;

using ThriftOutput = tevra::fake::PlatformTest;

TEST_F(ThriftOutput, BecomesLinesOfLevelSevenAndLeavesStandardErrorAlone) {
  tevra::redirectThriftOutput();
  testing::internal::CaptureStderr();
  tevra::globalOutput()("100% gone");
  tevra::globalOutput().printf("%s died: %d", "TServerTransport", 24);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_THAT(tevra::fake::logLines(), ElementsAre(LogLine{7, "", "100% gone"},
                                                   LogLine{7, "", "TServerTransport died: 24"}));
}

}  // namespace
