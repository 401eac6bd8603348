#include "tools/si/section.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::Bytes;
using test::descriptor;
using test::makeSection;
using test::SectionHeader;

std::optional<Section> parse(const Bytes& bytes) {
  return Section::parse(bytes.data(), bytes.size());
}

Bytes section(int tableId, const Bytes& payload) {
  return makeSection({tableId, 1, 2}, payload);
}

TEST(Section, ReadsTheLongHeader) {
  const auto parsed = parse(makeSection({0x4E, 0x1234, 31, 3, 7, false}, {0, 1, 0, 2, 3, 0x4E}));
  ASSERT_TRUE(parsed.has_value());
  EXPECT_EQ(0x4E, parsed->tableId);
  EXPECT_EQ(0x1234, parsed->extension);
  EXPECT_EQ(31, parsed->version);
  EXPECT_FALSE(parsed->isCurrent);
  EXPECT_EQ(3, parsed->number);
  EXPECT_EQ(7, parsed->lastNumber);
  EXPECT_EQ(1, std::get<EIT>(parsed->content).transportStreamId) << "what lies behind the header";
}

TEST(Section, ReadsTheShortHeaderOfATot) {
  const auto parsed = parse(test::makeTot(0xC0FFEE0102, descriptor(0x58, Bytes(13, 1))));
  ASSERT_TRUE(parsed.has_value());
  EXPECT_EQ(0, parsed->extension);
  EXPECT_EQ(0, parsed->version);
  EXPECT_TRUE(parsed->isCurrent);
  EXPECT_EQ(0, parsed->lastNumber);
  EXPECT_EQ(0xC0FFEE0102, std::get<TOT>(parsed->content).utcTime) << "what lies behind the header";
}

TEST(Section, RefusesTablesThatNobodyAskedFor) {
  for (const int tableId : {0x03, 0x41, 0x46, 0x4F, 0x60, 0x6F, 0x70, 0x72, 0x80, 0xFF}) {
    EXPECT_FALSE(parse(section(tableId, Bytes(20, 0))).has_value()) << tableId;
  }
}

TEST(Section, RefusesAShortHeaderWhereALongOneBelongs) {
  Bytes bytes = section(kTablePat, {0, 1, 0xE0, 0x20});
  bytes[1] &= 0x7F;
  EXPECT_FALSE(parse(bytes).has_value());
  Bytes tot = test::makeTot(0);
  tot[1] |= 0x80;
  EXPECT_FALSE(parse(tot).has_value());
}

TEST(Section, RefusesALengthOtherThanItsOwn) {
  const Bytes bytes = section(kTablePat, {0, 1, 0xE0, 0x20});
  EXPECT_TRUE(parse(bytes).has_value());
  EXPECT_FALSE(Section::parse(bytes.data(), bytes.size() - 1).has_value());
  for (size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_FALSE(Section::parse(bytes.data(), size).has_value()) << size;
  }
}

TEST(Section, AllowsOnlyAnEitMoreThan1024Bytes) {
  const Bytes content = [] {
    Bytes loop;
    for (int i = 0; i < 5; ++i) {
      loop = test::joined({loop, descriptor(0x54, Bytes(250, 0))});
    }
    return loop;
  }();
  EXPECT_FALSE(parse(section(kTableCat, content)).has_value());
  const Bytes event = test::joined({Bytes(10, 0), test::loop(0, content)});
  EXPECT_TRUE(
      parse(section(kTableEitScheduleFirst, test::joined({Bytes(6, 0), event}))).has_value());
}

struct Case {
  const char* what;
  int tableId;
  Bytes payload;
  bool addsUp;
};

TEST(Section, RefusesLoopsThatDoNotAddUp) {
  const Bytes good = descriptor(0x0A, {'e', 'n', 'g', 0});
  const Bytes overlong = {0x0A, 5, 'e', 'n', 'g', 0};
  const Bytes halfHeader = {0x0A};
  const auto loop = [](const Bytes& content) { return test::loop(0xF, content); };
  const auto joined = test::joined;
  const Bytes es = {0x04, 0xE1, 0x00};
  const Bytes pcr = {0xE1, 0x00};
  const Bytes sdt = {0, 1, 0xFF};
  const Bytes service = {0, 1, 0xFC};
  const Bytes ids = {0, 1, 0, 2};
  const Bytes eit(6, 0);
  const Bytes event(10, 0);
  const std::vector<Case> cases = {
      {"PAT of whole entries", kTablePat, Bytes(8, 1), true},
      {"PAT without programmes", kTablePat, {}, true},
      {"PAT with a broken entry", kTablePat, Bytes(7, 1), false},
      {"CAT", kTableCat, good, true},
      {"CAT with an overlong descriptor", kTableCat, overlong, false},
      {"CAT with half a descriptor header", kTableCat, halfHeader, false},
      {"PMT", kTablePmt, joined({pcr, loop(good), es, loop(good)}), true},
      {"PMT without streams", kTablePmt, joined({pcr, loop({})}), true},
      {"PMT of two bytes", kTablePmt, pcr, false},
      {"PMT, programme loop too long", kTablePmt, joined({pcr, {0xF0, 1}}), false},
      {"PMT, programme descriptor too long", kTablePmt, joined({pcr, loop(overlong)}), false},
      {"PMT, stream descriptor too long", kTablePmt, joined({pcr, loop({}), es, loop(overlong)}),
       false},
      {"PMT, stream loop too long", kTablePmt, joined({pcr, loop({}), es, {0xFF, 0xFF}}), false},
      {"PMT, broken stream", kTablePmt, joined({pcr, loop({}), es}), false},
      {"SDT", kTableSdtActual, joined({sdt, service, loop(good)}), true},
      {"SDT, service loop too long", kTableSdtActual, joined({sdt, service, {0x80, 1}}), false},
      {"SDT of a byte", kTableSdtActual, {0}, false},
      {"NIT", kTableNitActual, joined({loop(good), loop(joined({ids, loop(good)}))}), true},
      {"NIT without the second loop", kTableNitActual, loop(good), false},
      {"NIT, second loop too long", kTableNitActual, joined({loop({}), {0xF0, 9}}), false},
      {"NIT, descriptor too long", kTableNitActual, joined({loop(overlong), loop({})}), false},
      {"NIT, broken transport stream", kTableNitActual, joined({loop({}), loop(ids)}), false},
      {"BAT", kTableBat, joined({loop({}), loop({})}), true},
      {"BAT, first loop too long", kTableBat, {0xFF, 0xFF, 0xF0, 0}, false},
      {"EIT without events", kTableEitPresentFollowing, eit, true},
      {"EIT", kTableEitScheduleLast, joined({eit, event, loop(good), event, loop({})}), true},
      {"EIT of five bytes", kTableEitPresentFollowing, Bytes(5, 0), false},
      {"EIT, broken event", kTableEitPresentFollowing, joined({eit, event}), false},
      {"EIT, event loop too long", kTableEitPresentFollowing, joined({eit, event, {0, 1}}), false},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(test.addsUp, parse(section(test.tableId, test.payload)).has_value()) << test.what;
  }
}

}  // namespace
}  // namespace tevra::tools
