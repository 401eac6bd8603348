#pragma once

#include <cstdint>

#include "records/records.h"
#include "store/stored_entries.h"
#include "store/table_stores.h"
#include "synth/service_work_record.h"

namespace tevra {

/**
 * PMT PID of a programme as a 16-bit signed number, the last match winning; -1, with a level-3
 * line, when the PAT does not list it: docs/contract.md, "Missing programme".
 */
[[nodiscard]] int16_t findProgramPid(int32_t programNumber, const PAT& pat);

/**
 * service_type from the first service descriptor of the first service of that id which has one; 0,
 * with a level-4 line, when there is none.
 */
[[nodiscard]] uint8_t findServiceType(int32_t serviceId, const SDT& sdt);

///@{
/**
 * Build one table of the output service each from `workingStore`, whose filtered PMT still carries
 * the input programme number. A table whose content differs from the stored one moves the stored
 * version by one modulo 32 and replaces the stored table. The output record and the packets go to
 * `workingStore`; packets that are those of the last time are not made again.
 *
 * They raise std::bad_alloc for lack of memory; the stored table is then as it was, `workingStore`
 * of no further use. Otherwise they return 0; synthPAT -1 and the others 1 when libdvbpsi gives no
 * handle, and then change nothing. synthPMT uses the filtered PMT up, so it comes last.
 */
int synthPAT(ServiceWorkRecord& workingStore, StoredTables& stored);
int synthSDT(ServiceWorkRecord& workingStore, StoredTables& stored);
int synthPMT(ServiceWorkRecord& workingStore, StoredTables& stored);
///@}

/**
 * Despite its name synthesises all three first, against the stored entry of the input programme
 * number, then saves the table stores, changed or not. Raises as they do: the tables before the one
 * that failed have been stored, and are handed out the next time.
 */
void saveSynthesisedTables(TableStores& stores, ServiceWorkRecord& workingStore);

}  // namespace tevra
