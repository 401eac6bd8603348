// Linked into a test program, it gives the program a network of its own before the first test.
#include <gtest/gtest.h>

#include "tests/support/own_network.h"

namespace tevra::test {
namespace {

class OwnNetwork : public testing::Environment {
 public:
  void SetUp() override { enterOwnNetwork(); }
};

[[maybe_unused]] const testing::Environment* const kOwnNetwork =
    testing::AddGlobalTestEnvironment(new OwnNetwork);

}  // namespace
}  // namespace tevra::test
