#include "tools/outputs/pid_attributes.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(PidAttributes, NamesTheBitsThatAreSet) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(Names{}, pidAttributeNames(0));
  EXPECT_EQ((Names{"PCR", "ES"}), pidAttributeNames(0x0C));
  EXPECT_EQ((Names{"PMT", "PCR", "ES", "ECM", "EMM"}), pidAttributeNames(-1));
}

}  // namespace
}  // namespace tevra::tools
