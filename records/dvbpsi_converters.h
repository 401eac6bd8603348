#pragma once

#include "records/dvbpsi.h"
#include "records/records.h"

/**
 * @file
 * Between the records and libdvbpsi's decoded tables, member for member and in list order.
 *
 * To libdvbpsi (t2d) values are narrowed to libdvbpsi's members, descriptors over 255 bytes of
 * payload are left out with a level-4 line, and so are PAT programmes on PID 0, which libdvbpsi
 * refuses. The result is never null; std::bad_alloc is raised instead. From libdvbpsi (d2t) every
 * member of the record is set, its flags are not; a null table gives a default record.
 */
namespace tevra::thrift::dvb_tables {

///@{
/** From libdvbpsi; `table` may be null. */
[[nodiscard]] PAT d2tPAT(const dvbpsi_pat_t* table);
[[nodiscard]] PMT d2tPMT(const dvbpsi_pmt_t* table);
[[nodiscard]] SDT d2tSDT(const dvbpsi_sdt_t* table);
///@}

///@{
/** To libdvbpsi; never null. */
[[nodiscard]] CatPtr t2dCAT(const CAT& record);
[[nodiscard]] PatPtr t2dPAT(const PAT& record);
[[nodiscard]] PmtPtr t2dPMT(const PMT& record);
[[nodiscard]] SdtPtr t2dSDT(const SDT& record);
///@}

}  // namespace tevra::thrift::dvb_tables

namespace tevra {

/** What t2dPMT and d2tPMT together make of a PMT, without the way through libdvbpsi. */
[[nodiscard]] PMT narrowPMT(const PMT& record);

}  // namespace tevra
