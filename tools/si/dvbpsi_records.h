#pragma once

#include "records/dvbpsi.h"
#include "records/records.h"

/**
 * @file
 * From libdvbpsi's decoded tables to records, for the tables that records/dvbpsi_converters.h
 * leaves out: the daemon never decodes them, it is given them. Every member of the record is set; a
 * null table gives a default record.
 */
namespace tevra::tools {

///@{
/** From libdvbpsi; `table` may be null. */
[[nodiscard]] CAT d2tCAT(const dvbpsi_cat_t* table);
[[nodiscard]] NIT d2tNIT(const dvbpsi_nit_t* table);
[[nodiscard]] BAT d2tBAT(const dvbpsi_bat_t* table);
[[nodiscard]] TOT d2tTOT(const dvbpsi_tot_t* table);
///@}

}  // namespace tevra::tools
