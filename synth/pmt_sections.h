#pragma once

#include "records/dvbpsi.h"
#include "records/records.h"

namespace tevra {

/**
 * The sections of a PMT. ISO/IEC 13818-1 2.4.4.8 wants one, and libdvbpsi loses or overwrites data
 * without a sign when one does not suffice. A larger PMT is therefore split into sections that fit,
 * in table order, with a level-4 line naming `pmt.programNumber`. What no section can carry is left
 * out with a level-3 line: of a single stream over 1,008 bytes, its descriptors from the first that
 * does not fit; of a PMT over 256 sections, the rest. `told` is whether any line was logged.
 */
[[nodiscard]] SectionsPtr generatePmtSections(dvbpsi_t& handle, const PMT& pmt, bool& told);

}  // namespace tevra
