#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/control/control_server_fixture.h"
#include "tests/control/tables.h"
#include "tests/support/messages.h"

// What a client may send, and what becomes of the server when it sends more.

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::MatchesRegex;

using ControlServerLimits = ControlServerTest;

/** A schedule of `megabytes` million bytes on the wire, and a little more. */
EITMap largeSchedule(int megabytes) {
  constexpr size_t kPayload = 10000;
  EITMap eits;
  EIT& eit = eits[1][0x50];
  eit = makeEit(1, 0x50, 0, std::vector<uint64_t>(static_cast<size_t>(megabytes)));
  for (EITEvent& event : eit.events) {
    event.descriptors.assign(100, Descriptor());
    for (Descriptor& descriptor : event.descriptors) {
      descriptor.tag = 0x4E;
      descriptor.data.assign(kPayload, 'e');
    }
  }
  return eits;
}

TEST_F(ControlServerLimits, ConnectionNeverWearsOut) {
  ControlClient client;
  const EITMap eits = largeSchedule(30);
  for (int call = 0; call < 5; ++call) {
    client->setEITSchedule(eits);
  }
  EXPECT_EQ(5, fake::timesLogged(7, "setInputEITsch: SID [0x0001] tid [0x50] v[0] nevents [30]"));
  EXPECT_TRUE(client->sendCmd(0));
}

/** The lines that tell of a refused call. */
std::vector<std::string> refusals() {
  std::vector<std::string> found;
  for (const LogLine& line : fake::logLines(4)) {
    if (line.text.rfind("Control call refused: ", 0) == 0) {
      found.push_back(line.text);
    }
  }
  return found;
}

TEST_F(ControlServerLimits,
       RefusedCallIsOneLineWithTheClaimTheLimitAndTheClientAndOneForDebugging) {
  const RawConnection connection(kFirstControlPort);
  connection.send(framed(hugeListMessage(0x7FFFFFFF)) + framed(callMessage("sendCmd")));
  EXPECT_TRUE(connection.closedByPeer());
  EXPECT_THAT(refusals(), ElementsAre(MatchesRegex("Control call refused: elements of a container "
                                                   "\\[2147483647\\], limit \\[3\\], client "
                                                   "\\[127\\.0\\.0\\.1:[0-9]+\\]")));
  EXPECT_THAT(
      fake::logLines(),
      Contains(AllOf(Field(&LogLine::level, 7),
                     Field(&LogLine::text, HasSubstr("larger than the rest of its frame")))));
}

}  // namespace
}  // namespace tevra::test
