#include "synth/output_data.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/module_utils.h"
#include "synth/audio_languages.h"
#include "synth/elementary_streams.h"

namespace tevra {
namespace {

constexpr int32_t kLeavesChainHere = 0;
constexpr int32_t kNextNodeWithCat = 1;

/** Of one output; none, with an error line, where the request has no entry for it. */
const std::vector<LastNodeSettings>& lastNodesOf(const SrvOutputRequest& request,
                                                 int32_t globalSID) {
  static const std::vector<LastNodeSettings> kNone;
  const auto found = request.lastNodeSettings.find(globalSID);
  if (found == request.lastNodeSettings.end()) {
    log_function(kLogError, kNoTag, "Output SPTS has no LastNodeSettings");
    return kNone;
  }
  return found->second;
}

/** Without the filter where the platform's conversion of languages raises std::out_of_range. */
void filterInto(ServiceWorkRecord& work, const PMT& pmt, const LastNodeSettings& lastNode) {
  try {
    filterPmt(work.pmt, work.pidItems, work.service.pat, pmt, lastNode.audioFilter != 0,
              lastNode.audioLanguages);
  } catch (const std::out_of_range& exception) {
    work.pmt = pmt;
    std::cerr << "Out of Range error: " << exception.what() << '\n';
  }
}

}  // namespace

void OutputData::getSrvOutputData(OutputConfigurations& answer, const SrvOutputRequest& request) {
  answer.clear();
  try {
    serve(answer, request);
  } catch (const std::exception& exception) {
    log_function(kLogError, kNoTag, "inputSID [%06d] not served: %s", request.inputSID,
                 exception.what());
  }
}

void OutputData::serve(OutputConfigurations& answer, const SrvOutputRequest& request) {
  PMT pmt;
  if (!database_.getConflictFreePMT(pmt, request.inputSID)) {
    return;
  }
  log_function(kLogDebug, kNoTag, "inputSID [%06d] Match!!!", request.inputSID);
  ServiceTables service;
  service.inputSID = request.inputSID;
  // Without a PAT or an SDT the synthesis goes on with what an empty table gives, and says so.
  (void)database_.getConflictFreePAT(service.pat);
  (void)database_.getConflictFreeSDT(service.sdt);
  for (const auto& [key, spts] : request.outputs) {
    try {
      serveOutput(answer, spts, lastNodesOf(request, spts.globalSID), service, pmt);
    } catch (const std::exception& exception) {
      log_function(kLogError, kNoTag, "inputSID [%06d] globalSID [%06d] not served: %s",
                   request.inputSID, spts.globalSID, exception.what());
    }
  }
}

void OutputData::serveOutput(OutputConfigurations& answer, const OutputServiceDescription& spts,
                             const std::vector<LastNodeSettings>& lastNodes,
                             const ServiceTables& service, PMT& pmt) {
  const auto direct =
      std::find_if(lastNodes.begin(), lastNodes.end(),
                   [&](const LastNodeSettings& node) { return node.globalSID == spts.globalSID; });
  if (direct != lastNodes.end()) {
    answer[direct->globalSID] = buildDirect(spts, *direct, service, pmt);
    return;
  }
  for (const LastNodeSettings& lastNode : lastNodes) {
    answer[lastNode.globalSID] = buildListed(spts, lastNode, service);
  }
  if (answer.count(spts.globalSID) == 0) {
    answer[spts.globalSID] = buildFallback(spts, lastNodes, service, pmt);
  }
}

SPTSConfiguration OutputData::buildDirect(const OutputServiceDescription& spts,
                                          const LastNodeSettings& lastNode,
                                          const ServiceTables& service, PMT& pmt) {
  log_function(kLogDebug, kNoTag,
               "Direct inputSID [%06d] globalSID [%06d] LN: globalSID [%06d] uniqueSID[%06d]",
               service.inputSID, spts.globalSID, lastNode.globalSID, lastNode.uniqueSID);
  // Replaces the PMT for the outputs that follow, too: their fallback then has no ECM PIDs.
  (void)database_.getOutputPMT(pmt, service.inputSID);
  return buildOutput(service, pmt, spts, lastNode, {true, true});
}

SPTSConfiguration OutputData::buildListed(const OutputServiceDescription& spts,
                                          const LastNodeSettings& lastNode,
                                          const ServiceTables& service) {
  log_function(kLogDebug, kNoTag,
               "inputSID [%06d] globalSID [%06d] LN: globalSID [%06d] uniqueSID[%06d]",
               service.inputSID, spts.globalSID, lastNode.globalSID, lastNode.uniqueSID);
  PMT pmt;
  (void)database_.getOutputPMT(pmt, service.inputSID);  // known: its PMT was found above
  return buildOutput(service, pmt, spts, lastNode, {false, true});
}

SPTSConfiguration OutputData::buildFallback(const OutputServiceDescription& spts,
                                            const std::vector<LastNodeSettings>& lastNodes,
                                            const ServiceTables& service, const PMT& pmt) {
  LastNodeSettings settings;
  settings.globalSID = spts.globalSID;
  settings.uniqueSID = spts.globalSID;
  combineAudioSelection(settings, lastNodes);
  return buildOutput(service, pmt, spts, settings, {true, false});
}

SPTSConfiguration OutputData::buildOutput(const ServiceTables& service, const PMT& pmt,
                                          const OutputServiceDescription& spts,
                                          const LastNodeSettings& lastNode, BuildOptions options) {
  ServiceWorkRecord work(service);
  filterInto(work, pmt, lastNode);
  log_function(kLogDebug, kNoTag, "Next node [%d]", spts.nextNode);
  if (!options.fromLastNode && spts.nextNode == kNextNodeWithCat) {
    addEmmPids(work.pidItems);
  }
  work.outputTables.outputParam1 = lastNode.uniqueSID;
  if (spts.nextNode == kLeavesChainHere) {
    work.identity = spts;
  }
  saveSynthesisedTables(stores_, work);
  SPTSConfiguration configuration;
  configuration.pidItems = work.pidItems.take();
  resolveInputPids(configuration.pidItems, options.remapPids);
  configuration.outputTables = std::move(work.outputTables);
  return configuration;
}

void OutputData::addEmmPids(PidList& pidItems) {
  CAT cat;
  if (!database_.getConflictFreeCAT(cat)) {
    log_function(kLogError, kNoTag, "[Tornel] Asked for a CAT and not in DB.");
    return;
  }
  collectEmmPids(pidItems, cat);
}

void OutputData::resolveInputPids(std::vector<PIDItem>& pidItems, bool remapPids) {
  if (remapPids) {
    database_.resolveInputPids(pidItems);
  }
  for (const PIDItem& item : pidItems) {
    log_function(kLogDebug, kNoTag, "iPID [%05d] oPID [%05d]", item.inputPid, item.outputPid);
  }
}

}  // namespace tevra
