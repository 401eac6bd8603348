#pragma once

#include <gtest/gtest.h>

#include "control/control_server.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"

namespace tevra::test {

/** Fixture: the control server of MPTS 0, which is started once per process, as nothing stops it.
 */
class ControlServerTest : public fake::PlatformTest {
 protected:
  ControlServerTest() {
    static const ThreadedSimpleServer server = startControlServer(0);
    EXPECT_FALSE(server.empty());
    fake::clearLog();
  }
};

}  // namespace tevra::test
