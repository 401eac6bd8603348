#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "records/control_service.h"
#include "records/records.h"
#include "tools/outputs/output_request.h"

namespace tevra::tools {

/** What a daemon says of outputs, by global service id; listed nodes have entries of their own. */
using OutputAnswers = std::map<int32_t, SPTSConfiguration>;

/**
 * Asks for all outputs, with one call for each input service. Passes on what a call raises.
 * Precondition: no two outputs, nor a listed node and an output, have the same global service id.
 */
[[nodiscard]] OutputAnswers askFor(thrift::in_module::im_SIControlSrvIf& daemon,
                                   const std::vector<OutputOptions>& outputs);

/** Input service id to the global service ids of its outputs that have no answer. */
[[nodiscard]] std::map<int32_t, std::vector<int32_t>> unanswered(
    const std::vector<OutputOptions>& outputs, const OutputAnswers& answers);

/** On one line: "service 101 (global service id 7, 8), service 102 (global service id 9)". */
[[nodiscard]] std::string servicesText(const std::map<int32_t, std::vector<int32_t>>& globalSids);

}  // namespace tevra::tools
