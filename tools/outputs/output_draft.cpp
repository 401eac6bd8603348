#include "tools/outputs/output_draft.h"

#include <map>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

[[noreturn]] void fail(const OutputDraft& draft, const std::string& problem) {
  throw UsageError(draft.origin.empty() ? problem : draft.origin + ": " + problem);
}

/** An option's name on the command line, a key's where the output has keys. */
std::string named(const OutputDraft& draft, const std::string& option, const std::string& key) {
  return draft.origin.empty() ? option : key;
}

void requireConsistent(const OutputDraft& draft) {
  const OutputOptions& output = draft.output;
  const std::string lastNode = named(draft, "--last-node ", "last-node ");
  const std::string listedNode = named(draft, "--listed-node", "listed-node");
  const bool isListed = output.lastNode == LastNode::kListed;
  if (isListed && output.listedNodes.empty()) {
    fail(draft, lastNode + "listed needs a " + listedNode);
  }
  if (!isListed && !output.listedNodes.empty()) {
    fail(draft, listedNode + " goes with " + lastNode + "listed only");
  }
  if (output.lastNode == LastNode::kNone && output.audio) {
    fail(draft, named(draft, "--audio", "audio") + " needs last-node settings to stand in, " +
                    lastNode + "none sends none");
  }
  if (output.lastNode != LastNode::kDirect && output.uniqueSid) {
    fail(draft, named(draft, "--unique-sid", "usid") + " goes with " + lastNode + "direct only");
  }
  for (const ListedNode& node : output.listedNodes) {
    if (node.globalSid == draft.globalSid()) {
      fail(draft, "a listed node with the output's own global service id is what " + lastNode +
                      "direct sends");
    }
  }
}

}  // namespace

std::optional<int32_t> OutputDraft::globalSid() const {
  if (output.globalSid) {
    return output.globalSid;
  }
  return output.outputSid ? output.outputSid : service;
}

void requireConsistent(const std::vector<OutputDraft>& drafts) {
  for (const OutputDraft& draft : drafts) {
    requireConsistent(draft);
  }
}

void requireDistinct(const std::vector<OutputDraft>& drafts) {
  std::map<std::optional<int32_t>, const OutputDraft*> takers;
  const auto take = [&takers](std::optional<int32_t> globalSid, const OutputDraft& draft) {
    const OutputDraft* taker = takers.emplace(globalSid, &draft).first->second;
    if (taker != &draft) {
      const std::string id = globalSid ? "global service id " + std::to_string(*globalSid)
                                       : "the global service id of the same service";
      fail(draft, id + " is taken by " + taker->origin + ": give each output its own with gsid=N");
    }
  };
  for (const OutputDraft& draft : drafts) {
    take(draft.globalSid(), draft);
    for (const ListedNode& node : draft.output.listedNodes) {
      take(node.globalSid, draft);
    }
  }
}

std::vector<OutputOptions> outputsOf(const std::vector<OutputDraft>& drafts) {
  std::vector<OutputOptions> outputs;
  outputs.reserve(drafts.size());
  for (const OutputDraft& draft : drafts) {
    outputs.push_back(draft.output);
    outputs.back().inputSid = draft.service.value();
  }
  return outputs;
}

}  // namespace tevra::tools
