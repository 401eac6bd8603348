#include "tools/status/listening.h"

#include <arpa/inet.h>

#include <gmock/gmock.h>

#include "tests/platform/temporary_directory.h"
#include "tests/support/files.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

using testing::Eq;
using testing::Optional;

constexpr const char* kHeading = "  sl  local_address rem_address   st tx_queue rx_queue\n";

std::string digits(uint32_t networkOrder) {
  return hex(networkOrder, 8).substr(2);
}

const std::string kAny = digits(0);
const std::string kLoopback = digits(htonl(INADDR_LOOPBACK));
const std::string kOther = digits(htonl(0xC0000201));  // 192.0.2.1
const std::string kMapped = kAny + kAny + digits(htonl(0xFFFF));

/** A socket's line: 0A listens, 01 is a connection. */
std::string line(const std::string& address, const std::string& port, const std::string& state) {
  return "   0: " + address + ":" + port + " " + kAny + ":0000 " + state + " 00000000:00000000\n";
}

class Listening : public testing::Test {
 protected:
  std::optional<bool> at9256(const std::string& tcp, const std::string& tcp6) {
    tevra::test::writeText(directory_ / "tcp", kHeading + tcp);
    tevra::test::writeText(directory_ / "tcp6", kHeading + tcp6);
    return isListening(9256, directory_.path());
  }

  const tevra::test::TemporaryDirectory directory_;
};

TEST_F(Listening, IsASocketThatTakesWhatIsSentToTheLoopbackAddress) {
  for (const std::string& address : {kAny, kLoopback}) {
    EXPECT_THAT(at9256(line(address, "2428", "0A"), ""), Optional(true)) << address;
  }
  for (const std::string& address :
       {kAny + kAny + kAny + kAny, kMapped + kLoopback, kMapped + kAny}) {
    EXPECT_THAT(at9256("", line(address, "2428", "0A")), Optional(true)) << address;
  }
}

TEST_F(Listening, IsNoConnectionNorAnotherPortNorAnotherAddress) {
  EXPECT_THAT(at9256(line(kLoopback, "2428", "01") + line(kLoopback, "2429", "0A") +
                         line(kOther, "2428", "0A") + "nonsense\n   1: \n",
                     line(kAny + kAny + kAny + kLoopback, "2428", "0A")),
              Optional(false));
}

TEST_F(Listening, IsKnownFromOneTableAndUnknownWithoutAny) {
  EXPECT_THAT(isListening(9256, directory_ / "absent"), Eq(std::nullopt));
  tevra::test::writeText(directory_ / "tcp", kHeading);
  EXPECT_THAT(isListening(9256, directory_.path()), Optional(false));
}

}  // namespace
}  // namespace tevra::tools
