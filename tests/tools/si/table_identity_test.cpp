#include "tools/si/table_identity.h"

#include <gtest/gtest.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

std::string identityText(const SiTable& table) {
  const TableIdentity identity = identityOf(table);
  std::string text = namesOf(identity.kind).whole + (" " + std::to_string(identity.tableId));
  for (const TableId& id : identity.ids) {
    text += std::string(", ") + id.name + " " + std::to_string(id.value);
  }
  return text + ": " + identity.subject();
}

TEST(TableIdentity, IsTableIdAndTheHeadersIdentifiersAndNothingElse) {
  EXPECT_EQ("PAT 0, transportStreamId 1: transport stream 1",
            identityText(test::patRecord({{1, 256}})));
  EXPECT_EQ("CAT 1: ", identityText(test::catRecord({})));
  EXPECT_EQ("PMT 2, programNumber 101: service 101", identityText(test::pmtRecord({})));
  EXPECT_EQ("TOT 115: ", identityText(test::totRecord(5)));
  NIT nit;
  nit.tableId = 0x40;
  nit.networkId = 7;
  EXPECT_EQ("NIT 64, networkId 7: network 7", identityText(nit));
  BAT bat;
  bat.tableId = 0x4A;
  bat.bouquetId = 8;
  EXPECT_EQ("BAT 74, bouquetId 8: bouquet 8", identityText(bat));
}

TEST(TableIdentity, SaysOfAnotherStreamsSdtThatItIs) {
  SDT sdt = test::sdtRecord({});
  EXPECT_EQ("SDT 66, transportStreamId 1, originalNetworkId 2: transport stream 1",
            identityText(sdt));
  sdt.tableId = 0x46;
  EXPECT_EQ("SDT 70, transportStreamId 1, originalNetworkId 2: other transport stream 1",
            identityText(sdt));
}

TEST(TableIdentity, OfAnEitIsOneOfTwoKindsByItsTableId) {
  EIT eit = test::eitRecord({});
  eit.originalNetworkId = 2;
  const std::string ids = ", serviceId 101, transportStreamId 0, originalNetworkId 2: service 101";
  for (const int schedule : {0x50, 0x5F}) {
    eit.tableId = schedule;
    EXPECT_EQ("EIT schedule " + std::to_string(schedule) + ids, identityText(eit));
  }
  eit.tableId = 0x4E;
  EXPECT_EQ("EIT present/following 78" + ids, identityText(eit));
}

TEST(TableIdentity, GoesWithAVersionButThatOfATot) {
  PMT pmt = test::pmtRecord({});
  pmt.version = 5;
  EXPECT_EQ(5, versionOf(pmt));
  EXPECT_FALSE(versionOf(test::totRecord(5)).has_value());
}

}  // namespace
}  // namespace tevra::tools
