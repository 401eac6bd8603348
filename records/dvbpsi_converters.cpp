#include "records/dvbpsi_converters.h"

#include "records/dvbpsi_lists.h"

namespace tevra::thrift::dvb_tables {

PAT d2tPAT(const dvbpsi_pat_t* table) {
  PAT record;
  if (table == nullptr) {
    return record;
  }
  record.transportStreamId = table->i_ts_id;
  record.version = table->i_version;
  record.currentNext = table->b_current_next;
  for (const auto* node = table->p_first_program; node != nullptr; node = node->p_next) {
    PATProgram& program = record.programs.emplace_back();
    program.programNumber = node->i_number;
    program.pid = node->i_pid;
  }
  return record;
}

PMT d2tPMT(const dvbpsi_pmt_t* table) {
  PMT record;
  if (table == nullptr) {
    return record;
  }
  record.programNumber = table->i_program_number;
  record.version = table->i_version;
  record.currentNext = table->b_current_next;
  record.pcrPid = table->i_pcr_pid;
  record.descriptors = descriptorsFromDvbpsi(table->p_first_descriptor);
  for (const auto* node = table->p_first_es; node != nullptr; node = node->p_next) {
    PMTES& stream = record.esList.emplace_back();
    stream.streamType = node->i_type;
    stream.pid = node->i_pid;
    stream.descriptors = descriptorsFromDvbpsi(node->p_first_descriptor);
  }
  return record;
}

SDT d2tSDT(const dvbpsi_sdt_t* table) {
  SDT record;
  if (table == nullptr) {
    return record;
  }
  record.tableId = table->i_table_id;
  record.transportStreamId = table->i_extension;
  record.version = table->i_version;
  record.currentNext = table->b_current_next;
  record.originalNetworkId = table->i_network_id;
  for (const auto* node = table->p_first_service; node != nullptr; node = node->p_next) {
    SDTService& service = record.services.emplace_back();
    service.serviceId = node->i_service_id;
    service.eitSchedule = node->b_eit_schedule;
    service.eitPresentFollowing = node->b_eit_present;
    service.runningStatus = node->i_running_status;
    service.freeCA = node->b_free_ca;
    service.descriptors = descriptorsFromDvbpsi(node->p_first_descriptor);
  }
  return record;
}

CatPtr t2dCAT(const CAT& record) {
  CatPtr table =
      allocated(CatPtr(dvbpsi_cat_new(static_cast<uint8_t>(record.version), record.currentNext)));
  toDvbpsi(record.descriptors, table->p_first_descriptor);
  return table;
}

PatPtr t2dPAT(const PAT& record) {
  PatPtr table =
      allocated(PatPtr(dvbpsi_pat_new(static_cast<uint16_t>(record.transportStreamId),
                                      static_cast<uint8_t>(record.version), record.currentNext)));
  ProgramAppender programs(*table);
  for (const PATProgram& program : record.programs) {
    programs.add(static_cast<uint16_t>(program.programNumber), static_cast<uint16_t>(program.pid));
  }
  return table;
}

PmtPtr t2dPMT(const PMT& record) {
  PmtPtr table = allocated(PmtPtr(dvbpsi_pmt_new(
      static_cast<uint16_t>(record.programNumber), static_cast<uint8_t>(record.version),
      record.currentNext, static_cast<uint16_t>(record.pcrPid))));
  toDvbpsi(record.descriptors, table->p_first_descriptor);
  StreamAppender streams(*table);
  for (const PMTES& es : record.esList) {
    dvbpsi_pmt_es_t& stream =
        streams.add(static_cast<uint8_t>(es.streamType), static_cast<uint16_t>(es.pid));
    toDvbpsi(es.descriptors, stream.p_first_descriptor);
  }
  return table;
}

SdtPtr t2dSDT(const SDT& record) {
  SdtPtr table = allocated(SdtPtr(dvbpsi_sdt_new(
      static_cast<uint8_t>(record.tableId), static_cast<uint16_t>(record.transportStreamId),
      static_cast<uint8_t>(record.version), record.currentNext,
      static_cast<uint16_t>(record.originalNetworkId))));
  ServiceAppender services(*table);
  for (const SDTService& source : record.services) {
    toDvbpsi(source.descriptors, services.add(source).p_first_descriptor);
  }
  return table;
}

}  // namespace tevra::thrift::dvb_tables

namespace tevra {
namespace {

std::vector<Descriptor> narrowed(const std::vector<Descriptor>& descriptors) {
  std::vector<Descriptor> result;
  result.reserve(descriptors.size());
  for (const Descriptor& descriptor : descriptors) {
    if (!fitsSection(descriptor)) {
      logLeftOut(descriptor);
      continue;
    }
    Descriptor& copy = result.emplace_back();
    copy.tag = static_cast<uint8_t>(descriptor.tag);
    copy.data = descriptor.data;
  }
  return result;
}

}  // namespace

PMT narrowPMT(const PMT& record) {
  PMT narrow;
  narrow.programNumber = static_cast<uint16_t>(record.programNumber);
  narrow.version = static_cast<uint8_t>(record.version);
  narrow.currentNext = record.currentNext;
  narrow.pcrPid = static_cast<uint16_t>(record.pcrPid);
  narrow.descriptors = narrowed(record.descriptors);
  narrow.esList.reserve(record.esList.size());
  for (const PMTES& es : record.esList) {
    PMTES& stream = narrow.esList.emplace_back();
    stream.streamType = static_cast<uint8_t>(es.streamType);
    stream.pid = static_cast<uint16_t>(es.pid);
    stream.descriptors = narrowed(es.descriptors);
  }
  return narrow;
}

}  // namespace tevra
