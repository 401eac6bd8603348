#pragma once

#include <functional>
#include <string>

#include "records/control_service.h"

namespace tevra::tools {

/**
 * Runs `calls` with an engine of their own: what the daemon of multiplex 0 does with its calls, in
 * this process, without ports, notifications and log. It answers as a daemon does that is started
 * for these calls.
 *
 * Without a `stateDirectory` it begins with nothing and leaves nothing: not a file is made or read.
 * With one, PIDs and versions go on from the three files in it and are saved there, as in a
 * daemon's configuration root. It is made where it is missing.
 *
 * Raises ToolError where the directory cannot be used or what is in it cannot be saved; passes on
 * what `calls` raises. One at a time in a process.
 */
void withPrivateEngine(
    const std::string& stateDirectory,
    const std::function<void(thrift::in_module::im_SIControlSrvIf& engine)>& calls);

}  // namespace tevra::tools
