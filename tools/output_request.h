#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "records/records.h"

namespace tevra::tools {

/** How the request's lastNodeSettings describe the nodes that feed the output. */
enum class LastNode {
  kDirect,  ///< one node, with the output's own global service id
  kListed,  ///< one or more nodes with global service ids of their own
  kNone,    ///< no entry for the output
};

/** Audio languages to keep. Without a value: no filter. Empty: no audio at all. */
using AudioFilter = std::optional<std::vector<std::string>>;

struct ListedNode {
  int32_t globalSid = 0;
  int32_t uniqueSid = 0;
  AudioFilter audio;
};

/** One output of one service. */
struct OutputOptions {
  int32_t inputSid = 0;
  std::optional<int32_t> globalSid;          // default: the output service id
  std::optional<int32_t> outputSid;          // default: the input service id
  std::optional<int32_t> uniqueSid;          // default: the global service id
  std::optional<std::string> name;           // default: "Service " and the output service id
  std::optional<int32_t> transportStreamId;  // default: 1
  std::optional<int32_t> originalNetworkId;  // default: 1
  int32_t nextNode = 0;
  int32_t outputParam = 0;
  LastNode lastNode = LastNode::kDirect;
  AudioFilter audio;
  std::vector<ListedNode> listedNodes;

  [[nodiscard]] int32_t resolvedOutputSid() const { return outputSid.value_or(inputSid); }
  [[nodiscard]] int32_t resolvedGlobalSid() const {
    return globalSid.value_or(resolvedOutputSid());
  }
  [[nodiscard]] std::string resolvedName() const {
    return name.value_or("Service " + std::to_string(resolvedOutputSid()));
  }
};

/**
 * The request with one output, keyed by its global service id. Listed nodes without a filter get
 * the output's.
 */
[[nodiscard]] SrvOutputRequest makeRequest(const OutputOptions& options);

/**
 * The requests for any outputs: one for each input service, in the order in which they first come.
 * Of outputs with the same service and global service id only the last counts.
 */
[[nodiscard]] std::vector<SrvOutputRequest> makeRequests(const std::vector<OutputOptions>& outputs);

/**
 * Reads "fre", "fre,ger" or "fre+ger"; "none" is an empty list. Nothing when a code has not three
 * characters. Codes are kept as they are written.
 */
[[nodiscard]] std::optional<std::vector<std::string>> parseLanguages(const std::string& text);

/** Whether an entry of a list of languages can be one. */
[[nodiscard]] bool isLanguageCode(const std::string& text);

/**
 * Reads "GSID", "GSID:USID" or "GSID:USID:LANGUAGES". Without USID the unique service id is the
 * global one. Nothing when it is anything else.
 */
[[nodiscard]] std::optional<ListedNode> parseListedNode(const std::string& text);

/** Reads "direct", "listed" or "none". */
[[nodiscard]] std::optional<LastNode> parseLastNode(const std::string& text);

}  // namespace tevra::tools
