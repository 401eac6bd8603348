#include "tools/report/page/multiplex_layout.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "tools/report/page/multiplex_folds.h"

namespace tevra::tools::report {
namespace {

constexpr double kRowHeight = 21;
constexpr double kFoot = 10;  // below the last row of a band
constexpr double kGap = 18;

constexpr double kOutputWidth = kPictureWidth - kInset - kOutputLeft;
constexpr double kKeyHeight = 136;

constexpr double kThinnest = 1.25;
constexpr double kThickest = 12;

Box cardAt(double x, double width, double y, size_t rows) {
  return {x, y, width, kHeadHeight + static_cast<double>(rows) * kRowHeight + kFoot};
}

std::vector<Box> rowsOf(const Box& card, size_t count) {
  std::vector<Box> rows;
  for (size_t row = 0; row < count; ++row) {
    rows.push_back({card.x, card.y + kHeadHeight + static_cast<double>(row) * kRowHeight,
                    card.width, kRowHeight});
  }
  return rows;
}

std::vector<InputStream> streamsOf(const Report& report, std::optional<size_t> service) {
  if (service) {
    return report.services[*service].streams;
  }
  std::vector<InputStream> streams;
  std::copy_if(report.others.begin(), report.others.end(), std::back_inserter(streams),
               [&](const InputStream& stream) { return !isStray(report, stream); });
  return streams;
}

Band bandAt(double y, const Report& report, std::optional<size_t> service) {
  Band band;
  band.service = service;
  band.top = y - kInset;
  if (service && isEmpty(report, report.services[*service])) {
    return band;
  }
  band.streams = streamsOf(report, service);
  const size_t streams = band.streams.size();
  band.input = cardAt(kInset, kInputWidth, y, streams);
  band.inputRows = rowsOf(band.input, streams);
  band.inputServices.resize(streams, service ? std::set<size_t>{*service} : std::set<size_t>());
  if (service && report.services[*service].output) {
    const size_t count = report.services[*service].output->streams.size();
    band.output = cardAt(kOutputLeft, kOutputWidth, y, count);
    band.outputRows = rowsOf(*band.output, count);
  }
  return band;
}

double bottomOf(const Band& band) {
  return std::max(band.input.bottom(), band.output ? band.output->bottom() : 0);
}

/** The busiest PID but for stuffing, which would make all else look like nothing. */
double fullRateOf(const Report& report, const std::vector<Band>& bands) {
  uint64_t most = 1;
  for (const Band& band : bands) {
    for (const InputStream& stream : band.streams) {
      if (stream.kind != StreamKind::kStuffing) {
        most = std::max(most, report.countOf(stream.pid).packets);
      }
    }
  }
  return static_cast<double>(most);
}

/** Rows by PID and band. */
using Places = std::map<std::pair<int, size_t>, size_t>;

Places placesOf(const std::vector<Band>& bands) {
  Places places;
  for (size_t band = 0; band < bands.size(); ++band) {
    const std::vector<InputStream>& streams = bands[band].streams;
    for (size_t row = 0; row < streams.size(); ++row) {
      places.emplace(std::pair(streams[row].pid, band), row);
    }
  }
  return places;
}

/** Where an output's packets come from: its own band if the PID is there, else the first. */
Places::const_iterator sourceOf(const Places& places, int pid, size_t ownBand) {
  const auto own = places.find({pid, ownBand});
  const auto first = own == places.end() ? places.lower_bound({pid, 0}) : own;
  return first == places.end() || first->first.first != pid ? places.end() : first;
}

std::vector<Link> linksOf(const Report& report, const MultiplexLayout& layout) {
  const Places places = placesOf(layout.bands);
  std::vector<Link> links;
  for (size_t service = 0; service < report.services.size(); ++service) {
    const auto& output = report.services[service].output;
    for (size_t row = 0; output && row < output->streams.size(); ++row) {
      const OutputStream& stream = output->streams[row];
      const auto source = sourceOf(places, stream.inputPid.value_or(-1), service);
      if (source != places.end()) {
        const auto packets = static_cast<double>(report.countOf(*stream.inputPid).packets);
        const double thickness = stream.made ? 0 : kThickest * packets / layout.fullRate;
        links.push_back({source->first.second, source->second, service, row,
                         std::clamp(thickness, kThinnest, kThickest)});
      }
    }
  }
  return links;
}

}  // namespace

MultiplexLayout layoutMultiplex(const Report& report) {
  MultiplexLayout layout;
  double y = kHeadingsHeight + kInset;  // of the cards
  const auto add = [&](Band band, double bottom) {
    band.height = bottom + kGap - y;
    y += band.height;
    layout.bands.push_back(std::move(band));
  };
  for (size_t place = 0; place < report.services.size(); ++place) {
    const Band band = bandAt(y, report, place);
    add(band, band.input.height == 0 ? y - kGap : bottomOf(band));
  }
  const Band others = bandAt(y, report, std::nullopt);
  if (!others.streams.empty()) {
    layout.key = Box{kOutputLeft, y, kOutputWidth, kKeyHeight};
    add(others, std::max(bottomOf(others), layout.key->bottom()));
  }
  layout.fullRate = fullRateOf(report, layout.bands);
  layout.links = linksOf(report, layout);
  for (const Link& link : layout.links) {
    Band& from = layout.bands[link.fromBand];
    from.inputServices[link.fromRow].insert(from.service.value_or(link.toBand));
  }
  return layout;
}

}  // namespace tevra::tools::report
