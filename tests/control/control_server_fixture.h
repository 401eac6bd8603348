#pragma once

#include <string>

#include "tests/fakes/fake_platform.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"

namespace tevra::test {

/** Waits for a line of `level` that begins with `beginning`; false when none comes in 5 s. */
[[nodiscard]] bool waitForLine(int level, const std::string& beginning);

/** Fixture: the control server of MPTS 0, which is started once per process, as nothing stops it.
 */
class ControlServerTest : public fake::PlatformTest {
 protected:
  ControlServerTest();
};

}  // namespace tevra::test
