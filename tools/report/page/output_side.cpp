#include "tools/report/page/output_side.h"

#include <string>
#include <vector>

#include "tools/report/page/card.h"
#include "tools/report/page/page_words.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

constexpr double kVersionsWidth = 128;

CardHead headOf(const Output& output) {
  std::vector<std::string> versions;
  for (const TableFact& table : output.tables) {
    versions.push_back(table.kind + " " + std::to_string(table.version.value_or(0)));
  }
  const std::string facts = serviceText(output.serviceId) + " · transport stream " +
                            std::to_string(output.transportStreamId);
  return {output.name, facts, "", joined(versions, " · "), kVersionsWidth};
}

std::string titleOf(const OutputStream& stream) {
  const std::string source = stream.made       ? "made by the daemon"
                             : stream.inputPid ? "from input PID " + idText(*stream.inputPid)
                                               : "the daemon does not know its input PID";
  return joinedNonEmpty({"Output PID " + idText(stream.outputPid),
                         joinedNonEmpty({stream.description, joined(stream.languages, " "),
                                         joined(stream.attributes, ", ")},
                                        ", "),
                         source},
                        "\n");
}

}  // namespace

void drawOutput(const Report& report, const Band& band, Svg& svg) {
  if (!band.output) {
    return;
  }
  const Output& output = *report.services[*band.service].output;
  Card card(svg, "output", *band.output, band.service);
  card.head(headOf(output));
  for (size_t place = 0; place < output.streams.size(); ++place) {
    const OutputStream& stream = output.streams[place];
    CardRow row(svg, band.outputRows[place],
                {stream.outputPid,
                 stream.kind,
                 stream.description,
                 stream.languages,
                 titleOf(stream),
                 {*band.service},
                 stream.made,
                 /*silent=*/false});
    for (const std::string& attribute : stream.attributes) {
      row.chip(attribute);
    }
  }
}

}  // namespace tevra::tools::report
