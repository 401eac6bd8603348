#include "tools/si/table_decoder.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "records/dvbpsi_converters.h"
#include "tools/si/dvbpsi_records.h"
#include "tools/si/eit_decoder.h"

namespace tevra::tools {
namespace {

namespace dvb = thrift::dvb_tables;

/**
 * What a libdvbpsi decoder calls with the table it has decoded; `slot` is a DvbpsiPtr to keep it
 * in.
 */
template <class Table>
void keepTable(void* slot, Table* table) {
  static_cast<DvbpsiPtr<Table>*>(slot)->reset(table);
}

void ignoreNewSubTable(dvbpsi_t* /*handle*/, uint8_t /*tableId*/, uint16_t /*extension*/,
                       void* /*data*/) {}

DvbpsiHandle newHandle() {
  DvbpsiHandle handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE));
  if (handle == nullptr) {
    throw std::bad_alloc();
  }
  return handle;
}

/** A section as libdvbpsi holds it, posing as the only one of its table. */
SectionsPtr toDvbpsi(const Section& section) {
  SectionsPtr copy(dvbpsi_NewPSISection(static_cast<int>(section.bytes().size())));
  if (copy == nullptr) {
    throw std::bad_alloc();
  }
  std::copy(section.bytes().begin(), section.bytes().end(), copy->p_data);
  copy->i_table_id = static_cast<uint8_t>(section.tableId());
  copy->b_syntax_indicator = section.tableId() != kTableTot;
  copy->i_length = static_cast<uint16_t>(section.bytes().size() - 3);
  copy->i_extension = static_cast<uint16_t>(section.extension());
  copy->i_version = static_cast<uint8_t>(section.version());
  copy->b_current_next = section.isCurrent();
  copy->p_payload_start = copy->p_data + (section.payload() - section.bytes().data());
  copy->p_payload_end = copy->p_payload_start + section.payloadSize();
  return copy;
}

// The decoders of tables that have a PID of their own take the handle; `attach` is called with it
// and the rest.

template <class Table, class Attach, class Detach>
DvbpsiPtr<Table> decodeAlone(const Section& section, Attach attach, Detach detach) {
  const DvbpsiHandle handle = newHandle();
  SectionsPtr copy = toDvbpsi(section);
  DvbpsiPtr<Table> table;
  if (!attach(handle.get(), &keepTable<Table>, &table)) {
    throw std::bad_alloc();
  }
  handle->p_decoder->pf_gather(handle.get(), copy.release());
  detach(handle.get());
  return table;
}

// The others are attached to a demultiplexer, which detaches them too.

template <class Table, class Attach>
DvbpsiPtr<Table> decodeDemuxed(const Section& section, Attach attach) {
  const DvbpsiHandle handle = newHandle();
  SectionsPtr copy = toDvbpsi(section);
  DvbpsiPtr<Table> table;
  if (!dvbpsi_AttachDemux(handle.get(), &ignoreNewSubTable, nullptr)) {
    throw std::bad_alloc();
  }
  const bool attached = attach(handle.get(), copy->i_table_id, copy->i_extension, &keepTable<Table>,
                               static_cast<void*>(&table));
  if (attached) {
    dvbpsi_Demux(handle.get(), copy.release());
  }
  dvbpsi_DetachDemux(handle.get());
  if (!attached) {
    throw std::bad_alloc();
  }
  return table;
}

PAT decodePat(const Section& section) {
  PAT pat =
      dvb::d2tPAT(decodeAlone<dvbpsi_pat_t>(section, &dvbpsi_pat_attach, &dvbpsi_pat_detach).get());
  // libdvbpsi hands on no PAT without programmes; it is a legal one.
  pat.transportStreamId = section.extension();
  pat.version = section.version();
  pat.currentNext = section.isCurrent();
  return pat;
}

CAT decodeCat(const Section& section) {
  return d2tCAT(decodeAlone<dvbpsi_cat_t>(section, &dvbpsi_cat_attach, &dvbpsi_cat_detach).get());
}

PMT decodePmt(const Section& section) {
  const auto attach = [&section](dvbpsi_t* handle, dvbpsi_pmt_callback callback, void* data) {
    return dvbpsi_pmt_attach(handle, static_cast<uint16_t>(section.extension()), callback, data);
  };
  return dvb::d2tPMT(decodeAlone<dvbpsi_pmt_t>(section, attach, &dvbpsi_pmt_detach).get());
}

SDT decodeSdt(const Section& section) {
  return dvb::d2tSDT(decodeDemuxed<dvbpsi_sdt_t>(section, &dvbpsi_sdt_attach).get());
}

NIT decodeNit(const Section& section) {
  return d2tNIT(decodeDemuxed<dvbpsi_nit_t>(section, &dvbpsi_nit_attach).get());
}

BAT decodeBat(const Section& section) {
  return d2tBAT(decodeDemuxed<dvbpsi_bat_t>(section, &dvbpsi_bat_attach).get());
}

TOT decodeTot(const Section& section) {
  return d2tTOT(decodeDemuxed<dvbpsi_tot_t>(section, &dvbpsi_tot_attach).get());
}

template <class Entry>
void append(std::vector<Entry>& list, std::vector<Entry>&& more) {
  list.insert(list.end(), std::make_move_iterator(more.begin()),
              std::make_move_iterator(more.end()));
}

void join(PAT& table, PAT&& next) {
  append(table.programs, std::move(next.programs));
}

void join(CAT& table, CAT&& next) {
  append(table.descriptors, std::move(next.descriptors));
}

void join(PMT& table, PMT&& next) {
  append(table.descriptors, std::move(next.descriptors));
  append(table.esList, std::move(next.esList));
}

void join(SDT& table, SDT&& next) {
  append(table.services, std::move(next.services));
}

void join(NIT& table, NIT&& next) {
  append(table.descriptors, std::move(next.descriptors));
  append(table.transportStreams, std::move(next.transportStreams));
}

void join(BAT& table, BAT&& next) {
  append(table.descriptors, std::move(next.descriptors));
  append(table.transportStreams, std::move(next.transportStreams));
}

template <class Table>
Table decodeAll(const std::vector<Section>& sections, Table (*decode)(const Section&)) {
  Table table = decode(sections.front());
  std::for_each(std::next(sections.begin()), sections.end(),
                [&](const Section& section) { join(table, decode(section)); });
  return table;
}

}  // namespace

SiTable decodeTable(const std::vector<Section>& sections) {
  switch (sections.front().tableId()) {
    case kTablePat:
      return decodeAll(sections, &decodePat);
    case kTableCat:
      return decodeAll(sections, &decodeCat);
    case kTablePmt:
      return decodeAll(sections, &decodePmt);
    case kTableSdtActual:
      return decodeAll(sections, &decodeSdt);
    case kTableNitActual:
      return decodeAll(sections, &decodeNit);
    case kTableBat:
      return decodeAll(sections, &decodeBat);
    case kTableTot:
      return decodeTot(sections.front());
    default:
      return decodeEit(sections);
  }
}

}  // namespace tevra::tools
