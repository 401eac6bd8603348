#include "tools/report/page/pid_links.h"

#include <string>

#include "tools/report/facts/stream_traits.h"
#include "tools/report/page/page_words.h"

namespace tevra::tools::report {

void drawLink(const Report& report, const MultiplexLayout& layout, const Link& link, Svg& svg) {
  const Band& fromBand = layout.bands[link.fromBand];
  const Box& from = fromBand.inputRows[link.fromRow];
  const Box& to = layout.bands[link.toBand].outputRows[link.toRow];
  const InputStream& source = inputStreams(report, fromBand)[link.fromRow];
  const OutputStream& target = report.services[link.toBand].output->streams[link.toRow];
  const uint64_t packets = report.countOf(source.pid).packets;
  const std::string dashed = target.made || packets == 0 ? " dashed" : "";
  const auto group = svg.group({{"class", "link part k-" + kindWord(source.kind) + dashed},
                                {"data-s", std::to_string(link.toBand)},
                                {"data-from", std::to_string(source.pid)},
                                {"data-to", std::to_string(target.outputPid)}});
  svg.title("Input PID " + std::to_string(source.pid) + " to output PID " +
            std::to_string(target.outputPid) + "\n" +
            (target.made ? "rewritten by the daemon" : amountText(report, packets)));
  svg.ribbon(from.right(), from.middle(), to.x, to.middle(), link.thickness);
}

}  // namespace tevra::tools::report
