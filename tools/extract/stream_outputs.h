#pragma once

#include <ostream>
#include <vector>

#include "records/control_service.h"
#include "tools/feed/stream_inventory.h"
#include "tools/outputs/output_draft.h"

/**
 * @file
 * Outputs of a stream that is at hand.
 */
namespace tevra::tools {

/**
 * The outputs as the stream completes them: service, name and ids that are not said, and languages
 * in its cases. Raises ToolError for a service that has no PMT in it, and UsageError as
 * requireConsistent and requireDistinct do.
 */
[[nodiscard]] std::vector<OutputOptions> settledOutputs(std::vector<OutputDraft> drafts,
                                                        const StreamInventory& inventory);

/** As enterServices, of the outputs' services; prints its lines. */
void enterServicesOf(const std::vector<OutputOptions>& outputs,
                     thrift::in_module::im_SIControlSrvIf& engine, const StreamInventory& inventory,
                     std::ostream& err);

}  // namespace tevra::tools
