#include "tools/extract/extract_json.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tevra::tools {
namespace {

using nlohmann::json;

TEST(ExtractJson, HasPacketsAndGapsOfEachOutputPid) {
  SptsFile file;
  file.pidPackets = {{0, 2}, {502, 30}};
  file.pidGaps = {{502, 14}};
  const json printed = json::parse(extractJson("in.ts", 40, 3, {file}));
  EXPECT_EQ((json{{{"pid", 0}, {"packets", 2}, {"gaps", 0}},
                  {{"pid", 502}, {"packets", 30}, {"gaps", 14}}}),
            printed.at("outputs").at(0).at("pids"));
}

}  // namespace
}  // namespace tevra::tools
