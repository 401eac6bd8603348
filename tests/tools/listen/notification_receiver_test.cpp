#include "tools/listen/notification_receiver.h"

#include <gmock/gmock.h>

namespace tevra::tools {
namespace {

struct ContentText {
  std::string operator()(const ConfigurationRequest& /*request*/) const { return "request"; }
  std::string operator()(const NimValue& nim) const { return std::to_string(nim.value); }
  std::string operator()(const NotifiedTable& table) const {
    return std::string(namesOf(table.kind).call) + " " +
           namesOf(identityOf(table.table).kind).table + " v" +
           std::to_string(versionOf(table.table).value_or(0));
  }
};

template <class Table>
Table ofVersion(int version) {
  Table table;
  table.version = version;
  return table;
}

TEST(NotificationReceiver, HandsOnEveryCallWithWhatItBringsAndWhenItCame) {
  const auto start = std::chrono::system_clock::now();
  std::vector<std::string> taken;
  NotificationReceiver receiver([&](const Notification& notification) {
    EXPECT_GE(notification.time, start);
    taken.push_back(std::visit(ContentText(), notification.content));
  });
  receiver.notifyNIM(7);
  receiver.notifyPAT(ofVersion<PAT>(1));
  receiver.notifySDT(ofVersion<SDT>(2));
  receiver.notifyPMT(ofVersion<PMT>(3));
  receiver.notifyNIT(ofVersion<NIT>(4));
  receiver.notifyTOT(TOT());
  receiver.notifyBAT(ofVersion<BAT>(5));
  receiver.notifyCAT(ofVersion<CAT>(6));
  receiver.notifyEITPresentFollowing(ofVersion<EIT>(7));
  receiver.notifyEITSchedule(ofVersion<EIT>(8));
  receiver.requestConfiguration();
  EXPECT_THAT(taken,
              testing::ElementsAre("7", "PAT PAT v1", "SDT SDT v2", "PMT PMT v3", "NIT NIT v4",
                                   "TOT TOT v0", "BAT BAT v5", "CAT CAT v6",
                                   "EITPresentFollowing EIT v7", "EITSchedule EIT v8", "request"));
}

}  // namespace
}  // namespace tevra::tools
