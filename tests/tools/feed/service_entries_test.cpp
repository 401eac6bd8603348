#include "tools/feed/service_entries.h"

#include <gmock/gmock.h>

#include "tests/tools/support/recording_daemon.h"
#include "tests/tools/support/table_makers.h"
#include "tools/descriptors/descriptor_values.h"

namespace tevra::tools {
namespace {

using test::descriptorRecord;
using test::pmtRecord;
using test::streamRecord;
using testing::ElementsAre;
using testing::IsEmpty;

/** Keeps the SDT that it is handed. */
class SdtDaemon : public test::RecordingDaemon {
 public:
  std::vector<SDT> sdts;
  void setSDT(const SDT& sdt) override { sdts.push_back(sdt); }
};

/** Service 101 with AVC video, service 102 with MPEG audio. */
StreamInventory makeInventory() {
  StreamInventory inventory;
  inventory.add(test::patRecord({{101, 0x100}, {102, 0x200}}));
  inventory.add(pmtRecord({streamRecord(0x04, 513), streamRecord(0x1B, 512)}));
  PMT radio = pmtRecord({streamRecord(0x04, 600)});
  radio.programNumber = 102;
  inventory.add(radio);
  return inventory;
}

TEST(ServiceEntries, AreOfTheTypeOfTheStreams) {
  const std::vector<std::pair<std::vector<PMTES>, int>> cases = {
      {{streamRecord(0x04, 1), streamRecord(0x02, 2)}, 0x01},
      {{streamRecord(0x01, 1)}, 0x01},
      {{streamRecord(0x10, 1)}, 0x01},
      {{streamRecord(0x02, 1), streamRecord(0x1B, 2)}, 0x19},
      {{streamRecord(0x24, 1)}, 0x1F},
      {{streamRecord(0x33, 1)}, 0x21},
      {{streamRecord(0x03, 1), streamRecord(0x0B, 2)}, 0x02},
      {{streamRecord(0x11, 1), streamRecord(0x04, 2)}, 0x02},
      {{streamRecord(0x11, 1)}, 0x0A},
      {{streamRecord(0x06, 1, {descriptorRecord(0x6A, "x")})}, 0x0A},
      {{streamRecord(0x0B, 1)}, 0x0C},
      {{}, 0x0C},
  };
  for (const auto& [streams, type] : cases) {
    EXPECT_EQ(type, serviceTypeOf(pmtRecord(streams)));
  }
}

TEST(ServiceEntries, OfAStreamWithoutAnSdtAreHandedOverAsOneThatIsCurrent) {
  SdtDaemon daemon;
  EXPECT_THAT(enterServices(daemon, makeInventory(), {101, 102}),
              ElementsAre("there is no SDT to describe service 101: it goes out as AVC HD digital "
                          "television (type 0x19), by its streams",
                          "there is no SDT to describe service 102: it goes out as digital radio "
                          "(type 0x02), by its streams"));
  ASSERT_EQ(1U, daemon.sdts.size());
  const SDT& sdt = daemon.sdts[0];
  EXPECT_EQ(0x42, sdt.tableId);
  EXPECT_EQ(1, sdt.transportStreamId);
  EXPECT_TRUE(sdt.currentNext);
  ASSERT_EQ(2U, sdt.services.size());
  EXPECT_EQ(101, sdt.services[0].serviceId);
  EXPECT_EQ(4, sdt.services[0].runningStatus);
  const ServiceNames names = serviceNames(sdt.services[0].descriptors);
  EXPECT_EQ(0x19, names.type);
  EXPECT_EQ("Service 101", names.name);
  EXPECT_EQ("", names.provider);
}

TEST(ServiceEntries, StandBehindThoseOfTheStreamsSdtInItsNextVersion) {
  SdtDaemon daemon;
  StreamInventory inventory = makeInventory();
  SDT sdt = test::sdtRecord({test::serviceRecord(101, "Uno"), test::serviceRecord(103, "Tre")});
  sdt.version = 31;
  inventory.add(sdt);
  EXPECT_THAT(enterServices(daemon, inventory, {101, 102}),
              ElementsAre("the SDT does not describe service 102: it goes out as digital radio "
                          "(type 0x02), by its streams"));
  ASSERT_EQ(1U, daemon.sdts.size());
  EXPECT_EQ(0, daemon.sdts[0].version);
  EXPECT_EQ(2, daemon.sdts[0].originalNetworkId);
  ASSERT_EQ(3U, daemon.sdts[0].services.size());
  EXPECT_EQ(sdt.services[0], daemon.sdts[0].services[0]);
  EXPECT_EQ(sdt.services[1], daemon.sdts[0].services[1]);
  EXPECT_EQ(102, daemon.sdts[0].services[2].serviceId);
}

TEST(ServiceEntries, CompleteAnEntryWithoutAServiceDescriptor) {
  SdtDaemon daemon;
  StreamInventory inventory = makeInventory();
  SDT sdt = test::sdtRecord({test::serviceRecord(101, "Uno")});
  sdt.services[0].descriptors = {descriptorRecord(0x5D, "x")};
  inventory.add(sdt);
  EXPECT_EQ(1U, enterServices(daemon, inventory, {101}).size());
  ASSERT_EQ(1U, daemon.sdts.at(0).services.size());
  ASSERT_EQ(2U, daemon.sdts[0].services[0].descriptors.size());
  EXPECT_EQ(0x19, serviceNames(daemon.sdts[0].services[0].descriptors).type);
}

TEST(ServiceEntries, AreNotHandedOverWhereTheSdtHasThem) {
  SdtDaemon daemon;
  StreamInventory inventory = makeInventory();
  inventory.add(test::sdtRecord({test::serviceRecord(101, "Uno")}));
  EXPECT_THAT(enterServices(daemon, inventory, {101}), IsEmpty());
  EXPECT_THAT(daemon.sdts, IsEmpty());
}

}  // namespace
}  // namespace tevra::tools
