#include "tools/extract/stream_outputs.h"

#include <set>

#include "tools/feed/service_entries.h"
#include "tools/outputs/carriage.h"
#include "tools/outputs/output_answers.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

/** What the user did not say is as in the input. */
void takeStreamDefaults(OutputDraft& draft, const StreamInventory& inventory) {
  if (!draft.service) {
    draft.service = inventory.firstServiceWithPmt();
  }
  if (!draft.service) {
    throw ToolError("no service of this stream has a PMT");
  }
  OutputOptions& output = draft.output;
  const std::string name = inventory.service(*draft.service).name;
  if (!output.name && !name.empty()) {
    output.name = name;
  }
  if (!output.transportStreamId) {
    output.transportStreamId = inventory.transportStreamId();
  }
  if (!output.originalNetworkId) {
    output.originalNetworkId = inventory.originalNetworkId();
  }
  if (const PMT* pmt = inventory.pmt(*draft.service)) {
    output.streamLanguages = filterLanguages(*pmt);
  }
}

void requireService(int32_t serviceId, const StreamInventory& inventory) {
  if (!inventory.service(serviceId).hasPmt) {
    throw ToolError(
        "service " + std::to_string(serviceId) +
        " has no PMT in this stream; services that have: " + inventory.servicesWithPmt());
  }
}

}  // namespace

std::vector<OutputOptions> settledOutputs(std::vector<OutputDraft> drafts,
                                          const StreamInventory& inventory) {
  for (OutputDraft& draft : drafts) {
    takeStreamDefaults(draft, inventory);
    requireService(*draft.service, inventory);
  }
  requireConsistent(drafts);
  requireDistinct(drafts);
  return outputsOf(drafts);
}

void enterServicesOf(const std::vector<OutputOptions>& outputs,
                     thrift::in_module::im_SIControlSrvIf& engine, const StreamInventory& inventory,
                     const Tell& tell) {
  std::set<int> services;
  for (const OutputOptions& output : outputs) {
    services.insert(output.inputSid);
  }
  for (const std::string& line : enterServices(engine, inventory, services)) {
    tell(line);
  }
}

std::vector<SptsFile> askForFiles(const std::vector<OutputOptions>& outputs,
                                  thrift::in_module::im_SIControlSrvIf& engine,
                                  const StreamInventory& inventory, const Tell& tell) {
  enterServicesOf(outputs, engine, inventory, tell);
  const OutputAnswers answers = askFor(engine, outputs);
  const auto missing = unanswered(outputs, answers);
  if (!missing.empty()) {
    throw ToolError("there is no output for " + servicesText(missing) +
                    " though the service has a PMT; the log of a daemon may say why");
  }
  std::vector<SptsFile> files;
  for (const OutputOptions& output : outputs) {
    SptsFile& file = files.emplace_back();
    file.output = output;
    file.input = *inventory.pmt(output.inputSid);
    file.configuration = answers.at(output.resolvedGlobalSid());
  }
  return files;
}

}  // namespace tevra::tools
