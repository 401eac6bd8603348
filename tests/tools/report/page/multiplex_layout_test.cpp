#include "tools/report/page/multiplex_layout.h"

#include <algorithm>

#include <gmock/gmock.h>

#include "tests/tools/report/report_samples.h"

namespace tevra::tools::report {
namespace {

using test::reportOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

bool meet(const Box& a, const Box& b) {
  return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
}

bool contains(const Box& outer, const Box& inner) {
  return inner.x >= outer.x && inner.right() <= outer.right() && inner.y >= outer.y &&
         inner.bottom() <= outer.bottom();
}

void expectRowsWithin(const Box& card, const std::vector<Box>& rows) {
  for (size_t row = 0; row < rows.size(); ++row) {
    EXPECT_TRUE(contains(card, rows[row]));
    EXPECT_GE(rows[row].y, card.y + kHeadHeight);
    for (size_t other = row + 1; other < rows.size(); ++other) {
      EXPECT_FALSE(meet(rows[row], rows[other]));
    }
  }
}

std::vector<Box> cardsOf(const MultiplexLayout& layout) {
  std::vector<Box> cards;
  for (const Band& band : layout.bands) {
    cards.push_back(band.input);
    if (band.output) {
      cards.push_back(*band.output);
    }
  }
  if (layout.key) {
    cards.push_back(*layout.key);
  }
  return cards;
}

/** Nothing meets anything, and all lies within the picture. */
void expectSound(const MultiplexLayout& layout) {
  const Box picture = {0, 0, kPictureWidth, layout.bands.back().top + layout.bands.back().height};
  const std::vector<Box> cards = cardsOf(layout);
  for (size_t card = 0; card < cards.size(); ++card) {
    EXPECT_TRUE(contains(picture, cards[card])) << card;
    for (size_t other = card + 1; other < cards.size(); ++other) {
      EXPECT_FALSE(meet(cards[card], cards[other])) << card << " and " << other;
    }
  }
  double y = kHeadingsHeight;
  for (const Band& band : layout.bands) {
    EXPECT_EQ(y, band.top);
    EXPECT_LT(y, band.input.y);
    y += band.height;
    EXPECT_GT(y, std::max(band.input.bottom(), band.output ? band.output->bottom() : 0));
    expectRowsWithin(band.input, band.inputRows);
    if (band.output) {
      expectRowsWithin(*band.output, band.outputRows);
    }
  }
}

class MultiplexLayoutOf : public testing::TestWithParam<std::pair<size_t, size_t>> {};

TEST_P(MultiplexLayoutOf, AnyMultiplexHasNoOverlaps) {
  const auto [services, streams] = GetParam();
  const Report report = reportOf(services, streams);
  const MultiplexLayout layout = layoutMultiplex(report);
  expectSound(layout);
  EXPECT_EQ(services + 1, layout.bands.size());
  EXPECT_EQ(services * (streams + 2), layout.links.size()) << "PMT, streams and EMM of each";
}

INSTANTIATE_TEST_SUITE_P(Sizes, MultiplexLayoutOf,
                         testing::Values(std::pair(0, 0), std::pair(1, 0), std::pair(1, 5),
                                         std::pair(20, 8), std::pair(100, 15)));

TEST(MultiplexLayout, OfNothingAtAllHasNoBand) {
  const MultiplexLayout layout = layoutMultiplex(Report());
  EXPECT_TRUE(layout.bands.empty());
  EXPECT_FALSE(layout.key.has_value());
  EXPECT_EQ(1, layout.fullRate);
}

TEST(MultiplexLayout, LinksAnOutputToItsOwnServicesRowsFirst) {
  Report report = reportOf(2, 1);
  const int shared = report.services[0].streams[1].pid;
  report.services[1].streams[1].pid = shared;
  report.services[1].output->streams[3].inputPid = shared;
  const MultiplexLayout layout = layoutMultiplex(report);
  int found = 0;
  for (const Link& link : layout.links) {
    if (link.toRow == 3) {
      EXPECT_EQ(link.toBand, link.fromBand);
      ++found;
    }
  }
  EXPECT_EQ(2, found);
}

TEST(MultiplexLayout, LinksWhatNoServiceHasFromTheLastBand) {
  const MultiplexLayout layout = layoutMultiplex(reportOf(2, 1));
  for (const Link& link : layout.links) {
    if (link.toRow == 4) {
      EXPECT_EQ(2U, link.fromBand);
      EXPECT_EQ(1U, link.fromRow);
    }
  }
}

TEST(MultiplexLayout, LightsUpARowWithItsOwnServiceOrWithAllThatTakeIt) {
  const MultiplexLayout layout = layoutMultiplex(reportOf(2, 1));
  EXPECT_THAT(layout.bands.at(1).inputServices, Each(ElementsAre(1)));
  EXPECT_THAT(layout.bands.at(2).inputServices,
              ElementsAre(IsEmpty(), ElementsAre(0, 1), IsEmpty()))
      << "PAT, EMM, stuffing";
}

TEST(MultiplexLayout, DrawsNoLinkFromAPidThatTheInputDoesNotShow) {
  Report report = reportOf(1, 1);
  const size_t before = layoutMultiplex(report).links.size();
  report.services[0].output->streams[3].inputPid = 0x1ABC;
  report.services[0].output->streams[4].inputPid.reset();
  EXPECT_EQ(before - 2, layoutMultiplex(report).links.size());
}

TEST(MultiplexLayout, MakesLinksThickerWithTheBitRateButNotOfMadePackets) {
  const MultiplexLayout layout = layoutMultiplex(reportOf(1, 9));
  double last = 0;
  for (const Link& link : layout.links) {
    if (link.toRow >= 3 && link.toRow < 12) {
      EXPECT_GT(link.thickness, last);
      last = link.thickness;
    }
    if (link.toRow == 2) {
      EXPECT_LT(link.thickness, 2) << "the PMT";
    }
  }
  EXPECT_LE(last, 21) << "no thicker than a row is high";
}

TEST(MultiplexLayout, LeavesStuffingOutOfTheScaleOfBars) {
  EXPECT_EQ(1000, layoutMultiplex(reportOf(1, 9)).fullRate);
}

}  // namespace
}  // namespace tevra::tools::report
