#include "control/thrift_output.h"

#include "platform/module_utils.h"
#include "records/global_output.h"

namespace tevra {

void redirectThriftOutput() {
  globalOutput().setOutputFunction(
      [](const char* message) { log_function(kLogDebug, kNoTag, "%s", message); });
}

}  // namespace tevra
