#include "tools/report/page/multiplex_folds.h"

#include <algorithm>

#include "tools/report/page/figures.h"
#include "tools/report/page/page_words.h"
#include "tools/report/page/table_cells.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

bool carries(const Service& service, int pid) {
  return service.output &&
         std::any_of(service.output->streams.begin(), service.output->streams.end(),
                     [pid](const OutputStream& stream) { return stream.inputPid == pid; });
}

void serviceRow(const Service& service, Markup& markup) {
  const auto row = markup.open("tr");
  figureCell(markup, idText(service.serviceId));
  {
    const auto name = markup.open("td");
    markup.leaf("bdi", {}, nameOf(service));
  }
  cell(markup, joinedNonEmpty({service.typeName, service.provider}, " · "));
  const std::string noPmt =
      service.pmtPid ? "none on PID " + idText(*service.pmtPid) : "not in the PAT";
  cell(markup, service.hasPmt ? "without an output" : noPmt);
}

void pidRow(const Report& report, const InputStream& stream, Markup& markup) {
  const PidCount count = report.countOf(stream.pid);
  const auto row = markup.open("tr");
  figureCell(markup, idText(stream.pid));
  figureCell(markup, rateText(report, count.packets));
  figureCell(markup, shareText(report.share(count.packets)));
  figureCell(markup, groupedText(count.packets));
  faultCell(markup, count.continuityErrors);
  faultCell(markup, count.scrambled);
  faultCell(markup, count.transportErrors);
}

void emptyServices(const std::vector<const Service*>& services, Markup& markup) {
  if (services.empty()) {
    return;
  }
  const auto details = markup.open("details", {{"class", "fold"}});
  markup.leaf("summary", {}, counted(services.size(), "service") + " without a packet");
  const auto frame = markup.scroller("Services without a packet");
  const auto table = markup.open("table");
  headRow({"Service", "Name", "Kind", "PMT"}, markup);
  const auto body = markup.open("tbody");
  for (const Service* service : services) {
    serviceRow(*service, markup);
  }
}

void strayPids(const Report& report, const std::vector<const InputStream*>& streams,
               Markup& markup) {
  if (streams.empty()) {
    return;
  }
  uint64_t packets = 0;
  for (const InputStream* stream : streams) {
    packets += report.countOf(stream->pid).packets;
  }
  const auto details = markup.open("details", {{"class", "fold"}});
  markup.leaf(
      "summary", {},
      counted(streams.size(), "PID") + " in no PAT, CAT or PMT: " + amountText(report, packets));
  const auto frame = markup.scroller("PIDs in no table");
  const auto table = markup.open("table");
  headRow({"PID", "Bit rate", "Share", "Packets", "Gaps", "Scrambled", "Damaged"}, markup);
  const auto body = markup.open("tbody");
  for (const InputStream* stream : streams) {
    pidRow(report, *stream, markup);
  }
}

}  // namespace

bool isEmpty(const Report& report, const Service& service) {
  return !service.output && report.packetsOf(service) == 0;
}

bool isStray(const Report& report, const InputStream& stream) {
  return stream.kind == StreamKind::kUnreferenced &&
         std::none_of(report.services.begin(), report.services.end(),
                      [&](const Service& service) { return carries(service, stream.pid); });
}

void drawFolds(const Report& report, Markup& markup) {
  std::vector<const Service*> services;
  for (const Service& service : report.services) {
    if (isEmpty(report, service)) {
      services.push_back(&service);
    }
  }
  std::vector<const InputStream*> streams;
  for (const InputStream& stream : report.others) {
    if (isStray(report, stream)) {
      streams.push_back(&stream);
    }
  }
  emptyServices(services, markup);
  strayPids(report, streams, markup);
}

}  // namespace tevra::tools::report
