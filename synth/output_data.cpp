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

/** A missing last-node entry is an error worth a line, but never ends the request. */
void logNoLastNodeSettings() {
  log_function(kLogError, kNoTag, "Output SPTS has no LastNodeSettings");
}

void filterInto(ServiceWorkRecord& local, const ServiceWorkRecord& work,
                const LastNodeSettings& lastNode) {
  try {
    filterPmt(local.pmt, local.pidItems, local.pat, work.pmt, lastNode.audioFilter != 0,
              lastNode.audioLanguages);
  } catch (const std::out_of_range& exception) {
    local.pmt = work.pmt;
    std::cerr << "Out of Range error: " << exception.what() << '\n';
  }
}

/** A copy for one output, but for the PMT, which the filter makes anew. */
ServiceWorkRecord copyForFilter(const ServiceWorkRecord& work) {
  ServiceWorkRecord copy;
  copy.inputSID = work.inputSID;
  copy.pat = work.pat;
  copy.sdt = work.sdt;
  copy.pidItems = work.pidItems;
  copy.outputTables = work.outputTables;
  copy.outputSID = work.outputSID;
  copy.serviceName = work.serviceName;
  copy.transportStreamId = work.transportStreamId;
  copy.outputParam = work.outputParam;
  copy.originalNetworkId = work.originalNetworkId;
  return copy;
}

void takeOutputIdentity(ServiceWorkRecord& local, const OutputServiceDescription& spts) {
  local.outputSID = spts.outputSID;
  local.serviceName = spts.serviceName;
  local.transportStreamId = spts.transportStreamId;
  local.originalNetworkId = spts.originalNetworkId;
  local.outputParam = spts.outputParam;
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
  ServiceWorkRecord work;
  if (!database_.getConflictFreePMT(work.pmt, request.inputSID)) {
    return;
  }
  log_function(kLogDebug, kNoTag, "inputSID [%06d] Match!!!", request.inputSID);
  work.inputSID = request.inputSID;
  // Without a PAT or an SDT the synthesis goes on with what an empty table gives, and says so.
  (void)database_.getConflictFreePAT(work.pat);
  (void)database_.getConflictFreeSDT(work.sdt);
  for (const auto& [key, spts] : request.outputs) {
    try {
      serveOutput(answer, request, spts, work);
    } catch (const std::exception& exception) {
      log_function(kLogError, kNoTag, "inputSID [%06d] globalSID [%06d] not served: %s",
                   request.inputSID, spts.globalSID, exception.what());
    }
  }
}

void OutputData::serveOutput(OutputConfigurations& answer, const SrvOutputRequest& request,
                             const OutputServiceDescription& spts, ServiceWorkRecord& work) {
  try {
    serveFromLastNodes(answer, request, spts, work);
  } catch (const std::out_of_range&) {
    logNoLastNodeSettings();
  }
  if (answer.count(spts.globalSID) == 0) {
    serveFallback(answer, request, spts, work);
  }
}

void OutputData::serveFromLastNodes(OutputConfigurations& answer, const SrvOutputRequest& request,
                                    const OutputServiceDescription& spts, ServiceWorkRecord& work) {
  const auto& lastNodes = request.lastNodeSettings.at(spts.globalSID);
  const auto direct =
      std::find_if(lastNodes.begin(), lastNodes.end(),
                   [&](const LastNodeSettings& node) { return node.globalSID == spts.globalSID; });
  if (direct != lastNodes.end()) {
    serveDirect(answer, spts, *direct, work);
    return;
  }
  for (const LastNodeSettings& lastNode : lastNodes) {
    serveListed(answer, spts, lastNode, work);
  }
}

void OutputData::serveDirect(OutputConfigurations& answer, const OutputServiceDescription& spts,
                             const LastNodeSettings& lastNode, ServiceWorkRecord& work) {
  log_function(kLogDebug, kNoTag,
               "Direct inputSID [%06d] globalSID [%06d] LN: globalSID [%06d] uniqueSID[%06d]",
               work.inputSID, spts.globalSID, lastNode.globalSID, lastNode.uniqueSID);
  // Replaces the PMT for the outputs that follow, too: their fallback then has no ECM PIDs.
  (void)database_.getOutputPMT(work.pmt, work.inputSID);
  answer[lastNode.globalSID] = buildOutput(work, spts, lastNode, {true, true});
}

void OutputData::serveListed(OutputConfigurations& answer, const OutputServiceDescription& spts,
                             const LastNodeSettings& lastNode, const ServiceWorkRecord& work) {
  log_function(kLogDebug, kNoTag,
               "inputSID [%06d] globalSID [%06d] LN: globalSID [%06d] uniqueSID[%06d]",
               work.inputSID, spts.globalSID, lastNode.globalSID, lastNode.uniqueSID);
  ServiceWorkRecord copy = work;
  (void)database_.getOutputPMT(copy.pmt, copy.inputSID);  // known: its PMT was found above
  answer[lastNode.globalSID] = buildOutput(copy, spts, lastNode, {false, true});
}

void OutputData::serveFallback(OutputConfigurations& answer, const SrvOutputRequest& request,
                               const OutputServiceDescription& spts,
                               const ServiceWorkRecord& work) {
  LastNodeSettings settings;
  settings.globalSID = spts.globalSID;
  settings.uniqueSID = spts.globalSID;
  const auto lastNodes = request.lastNodeSettings.find(spts.globalSID);
  if (lastNodes != request.lastNodeSettings.end()) {
    combineAudioSelection(settings, lastNodes->second);
  }
  answer[spts.globalSID] = buildOutput(work, spts, settings, {true, false});
}

SPTSConfiguration OutputData::buildOutput(const ServiceWorkRecord& workingStore,
                                          const OutputServiceDescription& spts,
                                          const LastNodeSettings& lastNode, BuildOptions options) {
  ServiceWorkRecord local = copyForFilter(workingStore);
  filterInto(local, workingStore, lastNode);
  log_function(kLogDebug, kNoTag, "Next node [%d]", spts.nextNode);
  if (!options.fromLastNode && spts.nextNode == kNextNodeWithCat) {
    addEmmPids(local.pidItems);
  }
  local.outputTables.patPackets.clear();
  local.outputTables.sdtPackets.clear();
  local.outputTables.pmtPackets.clear();
  local.outputTables.outputParam1 = lastNode.uniqueSID;
  if (spts.nextNode == kLeavesChainHere) {
    takeOutputIdentity(local, spts);
  }
  saveSynthesisedTables(stores_, local);
  std::vector<PIDItem> pidItems = local.pidItems.take();
  resolveInputPids(pidItems, options.remapPids);
  SPTSConfiguration configuration;
  configuration.pidItems = std::move(pidItems);
  configuration.outputTables = std::move(local.outputTables);
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
  for (PIDItem& item : pidItems) {
    if (remapPids) {
      item.inputPid = database_.getInputPID(item.outputPid);
    }
    log_function(kLogDebug, kNoTag, "iPID [%05d] oPID [%05d]", item.inputPid, item.outputPid);
  }
}

}  // namespace tevra
