#pragma once

#include <cstdint>
#include <ostream>

#include "records/records.h"

namespace tevra::tools {

/** One output of an answer for people: the PIDs it carries and where they come from. */
void printPids(std::ostream& out, const SPTSConfiguration& configuration);

/** One output of an answer for people: the tables that go out. */
void printTables(std::ostream& out, const SPTSConfiguration& configuration);

/** One output of an answer for people, whole. */
void printOutput(std::ostream& out, int32_t globalSid, const SPTSConfiguration& configuration);

}  // namespace tevra::tools
