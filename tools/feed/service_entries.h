#pragma once

#include <set>
#include <string>
#include <vector>

#include "records/control_service.h"
#include "tools/feed/stream_inventory.h"

namespace tevra::tools {

/**
 * The service_type (EN 300 468, table 89) that streams like these go with: of the newest video, or
 * of the sound where there is no video. How many lines a video has its PMT does not say: AVC is
 * taken for HD.
 */
[[nodiscard]] int serviceTypeOf(const PMT& pmt);

/**
 * Enters services into the daemon's SDT that the stream's own does not describe. An output made
 * without its service's entry has no service type, and without any SDT one that is not current,
 * which receivers pass over, and the name with it.
 *
 * One SDT is handed over: the stream's last with the entries that it lacks, under the next version.
 * None where it lacks none. Returns a line for each service that is entered, for people. Passes on
 * what the call raises. Precondition: every service has a PMT.
 */
[[nodiscard]] std::vector<std::string> enterServices(thrift::in_module::im_SIControlSrvIf& daemon,
                                                     const StreamInventory& inventory,
                                                     const std::set<int>& services);

}  // namespace tevra::tools
