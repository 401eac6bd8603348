#include "tools/engine/state_directory.h"

#include <filesystem>
#include <optional>

#include <gmock/gmock.h>

#include "tests/platform/temporary_directory.h"
#include "tests/support/files.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

/** What is wrong with the directory; nothing when it can be used. */
std::string faultOf(const std::string& path) {
  try {
    const StateDirectory directory(path);
    return "";
  } catch (const ToolError& error) {
    return error.what();
  }
}

class StateDirectories : public testing::Test {
 protected:
  const test::TemporaryDirectory folder_;
  const std::string state_ = folder_ / "state";
};

TEST_F(StateDirectories, AreMadeWhereTheyAreMissingButNotTheirParents) {
  EXPECT_EQ("", faultOf(state_));
  EXPECT_TRUE(std::filesystem::is_directory(state_));
  const std::string path = folder_ / "no/state";
  EXPECT_EQ("cannot keep state in " + path + ": No such file or directory", faultOf(path));
}

TEST_F(StateDirectories, AreOneRunsAtATime) {
  std::optional<StateDirectory> first(state_);
  EXPECT_EQ("cannot keep state in " + state_ +
                ": another run uses it: wait for that one, or name another directory",
            faultOf(state_));
  first.reset();
  EXPECT_EQ("", faultOf(state_));
}

TEST_F(StateDirectories, AreRefusedWhereNoFileCanBeMade) {
  test::writeText(state_, "a file");
  EXPECT_EQ("cannot keep state in " + state_ + ": Not a directory", faultOf(state_));
  std::filesystem::remove(state_);
  std::filesystem::create_directory(state_);
  test::writeText(state_ + "/Tornel", "a file");
  EXPECT_EQ("cannot keep state in " + state_ + ": no file can be made there", faultOf(state_));
}

TEST_F(StateDirectories, AreRefusedWithAFileThatCannotBeRead) {
  ASSERT_EQ("", faultOf(state_));
  for (const std::string name :
       {"PIDRemap0", "Tornel/TableStoreFile0", "Tornel/EITTableVersionStoreFile0"}) {
    const std::string file = state_ + "/" + name;
    test::writeText(file, "{\"1\":");
    EXPECT_THAT(faultOf(state_), AllOf(StartsWith("cannot keep state in " + state_ + ": " + file +
                                                  " cannot be read ("),
                                       HasSubstr("): remove it to begin anew")));
    std::filesystem::remove(file);
  }
  EXPECT_EQ("", faultOf(state_));
}

}  // namespace
}  // namespace tevra::tools
