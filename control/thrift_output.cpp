#include "control/thrift_output.h"

#include <thrift/Thrift.h>

#include "platform/module_utils.h"

namespace tevra {

void redirectThriftOutput() {
  apache::thrift::GlobalOutput.setOutputFunction(
      [](const char* message) { log_function(kLogDebug, kNoTag, "%s", message); });
}

}  // namespace tevra
