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

/**
 * Audio languages to keep, each under either of its codes and in any case. Without a value: no
 * filter. Empty: no audio at all.
 */
using AudioFilter = std::optional<std::vector<std::string>>;

/** A last node with a global service id of its own: it has an entry of its own in the answer. */
struct ListedNode {
  int32_t globalSid = 0;  ///< the key of its entry; any number
  int32_t uniqueSid = 0;  ///< comes back as the entry's outputParam1; any number
  AudioFilter audio;      ///< without a value: the output's
};

/** One output of one service. */
struct OutputOptions {
  int32_t inputSid = 0;              ///< service_id in the input stream
  std::optional<int32_t> globalSid;  ///< default: the output service id
  std::optional<int32_t> outputSid;  ///< default: the input service id
  std::optional<int32_t> uniqueSid;  ///< of the direct node; default: the global service id
  std::optional<std::string> name;   ///< UTF-8; default: "Service " and the output service id
  std::optional<int32_t> transportStreamId;  ///< default: 1
  std::optional<int32_t> originalNetworkId;  ///< default: 1
  int32_t nextNode = 0;                   ///< 0: leaves the chain here, under its own ids and name
  int32_t outputParam = 0;                ///< travels along; the daemon does not read it
  LastNode lastNode = LastNode::kDirect;  ///< which of the next two count
  AudioFilter audio;                      ///< of the direct node, and of listed ones without any
  std::vector<ListedNode> listedNodes;    ///< sent with kListed alone
  /** How the stream at hand writes the languages of its audio; empty without one. */
  std::vector<std::string> streamLanguages;

  ///@{
  /** What is sent: as it is given, else the default above. */
  [[nodiscard]] int32_t resolvedOutputSid() const { return outputSid.value_or(inputSid); }
  [[nodiscard]] int32_t resolvedGlobalSid() const {
    return globalSid.value_or(resolvedOutputSid());
  }
  [[nodiscard]] std::string resolvedName() const {
    return name.value_or("Service " + std::to_string(resolvedOutputSid()));
  }
  ///@}
  /** The filter of the output's own entry: listed nodes' combined as the daemon combines them. */
  [[nodiscard]] AudioFilter resolvedAudio() const;
};

/**
 * The requests for any outputs: one for each input service, in the order in which they first come,
 * with its outputs keyed by their global service ids. Of outputs with the same service and global
 * service id only the last counts. Listed nodes without a filter get their output's.
 */
[[nodiscard]] std::vector<SrvOutputRequest> makeRequests(const std::vector<OutputOptions>& outputs);

/**
 * Reads "fre", "fre,ger" or "fre+ger"; "none" is an empty list. Nothing when a code has not three
 * characters. Codes stay as they are written.
 */
[[nodiscard]] std::optional<std::vector<std::string>> parseLanguages(const std::string& text);

/**
 * Reads "GSID", "GSID:USID" or "GSID:USID:LANGUAGES". Without USID the unique service id is the
 * global one. Nothing when it is anything else.
 */
[[nodiscard]] std::optional<ListedNode> parseListedNode(const std::string& text);

/** Reads "direct", "listed" or "none". */
[[nodiscard]] std::optional<LastNode> parseLastNode(const std::string& text);

}  // namespace tevra::tools
