#pragma once

#include <functional>
#include <string>
#include <vector>

#include "records/control_service.h"
#include "tools/extract/spts_files.h"
#include "tools/feed/stream_inventory.h"
#include "tools/outputs/output_draft.h"

/**
 * @file
 * Outputs of a stream that is at hand.
 */
namespace tevra::tools {

/** Given a line for people. */
using Tell = std::function<void(const std::string& line)>;

/**
 * The outputs as the stream completes them: service, name and ids that are not said, and languages
 * in its cases. Raises ToolError for a service that has no PMT in it, and UsageError as
 * requireConsistent and requireDistinct do.
 */
[[nodiscard]] std::vector<OutputOptions> settledOutputs(std::vector<OutputDraft> drafts,
                                                        const StreamInventory& inventory);

/** As enterServices, of the outputs' services; tells its lines. */
void enterServicesOf(const std::vector<OutputOptions>& outputs,
                     thrift::in_module::im_SIControlSrvIf& engine, const StreamInventory& inventory,
                     const Tell& tell);

/**
 * Enters the services of outputs that have been settled, and asks for the outputs: what to write,
 * in their order, without the names of files. Raises ToolError for one that has no answer.
 */
[[nodiscard]] std::vector<SptsFile> askForFiles(const std::vector<OutputOptions>& outputs,
                                                thrift::in_module::im_SIControlSrvIf& engine,
                                                const StreamInventory& inventory, const Tell& tell);

}  // namespace tevra::tools
