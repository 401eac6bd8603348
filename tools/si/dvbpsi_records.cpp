#include "tools/si/dvbpsi_records.h"

#include "records/dvbpsi_lists.h"

namespace tevra::tools {
namespace {

/** The transport stream loop of a NIT or BAT, which are alike in all but their types. */
template <class Entry, class Node>
std::vector<Entry> transportStreams(const Node* first) {
  std::vector<Entry> entries;
  for (const Node* node = first; node != nullptr; node = node->p_next) {
    Entry& entry = entries.emplace_back();
    entry.transportStreamId = node->i_ts_id;
    entry.originalNetworkId = node->i_orig_network_id;
    entry.descriptors = descriptorsFromDvbpsi(node->p_first_descriptor);
  }
  return entries;
}

}  // namespace

CAT d2tCAT(const dvbpsi_cat_t* table) {
  CAT record;
  if (table == nullptr) {
    return record;
  }
  record.version = table->i_version;
  record.currentNext = table->b_current_next;
  record.descriptors = descriptorsFromDvbpsi(table->p_first_descriptor);
  return record;
}

NIT d2tNIT(const dvbpsi_nit_t* table) {
  NIT record;
  if (table == nullptr) {
    return record;
  }
  record.tableId = table->i_table_id;
  record.extension = table->i_extension;
  record.networkId = table->i_network_id;
  record.version = table->i_version;
  record.currentNext = table->b_current_next;
  record.descriptors = descriptorsFromDvbpsi(table->p_first_descriptor);
  record.transportStreams = transportStreams<NITTS>(table->p_first_ts);
  return record;
}

BAT d2tBAT(const dvbpsi_bat_t* table) {
  BAT record;
  if (table == nullptr) {
    return record;
  }
  record.tableId = table->i_table_id;
  record.bouquetId = table->i_extension;
  record.version = table->i_version;
  record.currentNext = table->b_current_next;
  record.descriptors = descriptorsFromDvbpsi(table->p_first_descriptor);
  record.transportStreams = transportStreams<BATTS>(table->p_first_ts);
  return record;
}

TOT d2tTOT(const dvbpsi_tot_t* table) {
  TOT record;
  if (table == nullptr) {
    return record;
  }
  record.tableId = table->i_table_id;
  record.extension = table->i_extension;
  record.version = table->i_version;
  record.currentNext = table->b_current_next;
  record.utcTime = static_cast<int64_t>(table->i_utc_time);
  record.descriptors = descriptorsFromDvbpsi(table->p_first_descriptor);
  return record;
}

}  // namespace tevra::tools
