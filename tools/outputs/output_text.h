#pragma once

#include <cstdint>
#include <ostream>

#include "records/records.h"

namespace tevra::tools {

/** One output of an answer for people: the PIDs, where they come from, the tables that go out. */
void printOutput(std::ostream& out, int32_t globalSid, const SPTSConfiguration& configuration);

}  // namespace tevra::tools
