#pragma once

#include <variant>

#include "records/records.h"

namespace tevra::tools {

/** Any table that the daemon takes. */
using SiTable = std::variant<PAT, CAT, PMT, SDT, NIT, BAT, TOT, EIT>;

}  // namespace tevra::tools
